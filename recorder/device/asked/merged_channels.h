#pragma once

#include <json/json.h>

#include <string>
#include <vector>

namespace recorder {

/// What a camera's capability file says, with one entry for all channels that it says the like of.
struct MergedChannels {
  Json::Value entry;                  ///< as in the file, with placeholders for the channel in its paths
  std::vector<std::string> channels;  ///< that it is about, as the camera has them
};

/// Of the `models` of a valid capability file. Where their paths differ by more than the number of the channel, or
/// their codecs do, it is the channel that was asked about last alone; other settings that differ are left out. Pure.
MergedChannels MergeChannels(const Json::Value& models);

}  // namespace recorder
