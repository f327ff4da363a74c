#pragma once

#include <cstdint>
#include <string>

#include "recorder/device/camera_facts.h"

namespace recorder {

/// Text of the capability file of one camera, in the format of the model files: what the camera said at `time` (seconds
/// since 1970), what is assumed where it said nothing, and which is which. `earlier` is what the file said before, or
/// null: paths of other channels that the camera still has are taken over from it. Texts and lists are cut to what a
/// model file may hold. `place` is the camera's host and port, for people.
std::string CameraFileText(const std::string& vendor, const std::string& place, const CameraFacts& facts,
                           std::int64_t time, const Model* earlier);

}  // namespace recorder
