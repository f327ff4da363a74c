#pragma once

#include <json/json.h>

#include <cstdint>
#include <string>

#include "recorder/device/asked/camera_report.h"

namespace recorder {

/// Text of the capability file of one camera, in the format of the model files: what the camera said at `time` (seconds
/// since 1970) about one channel, what is assumed where it said nothing, and which is which. `earlier` is the valid
/// file that is replaced, or null: what it says about other channels that the camera still has is taken over. Texts and
/// lists are cut to what a model file may hold. `place` is the camera's host and port, for people.
std::string CameraFileText(const std::string& vendor, const std::string& place, const CameraReport& report,
                           std::int64_t time, const Json::Value& earlier);

}  // namespace recorder
