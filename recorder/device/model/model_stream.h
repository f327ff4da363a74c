#pragma once

#include <string>
#include <string_view>

#include "recorder/device/model/model.h"

// Which stream of a model is meant, and where a camera has it. Pure functions, any thread.

namespace recorder {

/// The stream of this name in this codec; else the one of this name that is in whatever codec; else the first of this
/// name, since many a camera can be set to send another codec there. `codec` "" takes the first. Null: the model has no
/// stream of this name, or the user gives its path.
const ModelStream* FindModelStream(const Model& model, std::string_view name, std::string_view codec);

/// The channel that the camera is asked for where a user typed `channel`. A camera with one channel has it under any
/// name, unless it may have others; of several, a name that the model does not have is left to the camera, so that a
/// test does not pass for another channel.
std::string ChannelToAsk(const Model& model, const std::string& channel);

/// The path of the stream at the camera, for a channel as ChannelToAsk gives it.
std::string StreamPath(const ModelStream& stream, std::string_view channel);

}  // namespace recorder
