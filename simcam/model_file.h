#pragma once

#include <json/json.h>

#include <string>

#include "simcam/config.h"

namespace simcam {

/// Gives the camera what one model of a model file (docs/models.md) says: its streams and pictures, each at exactly the
/// paths of the file, for each of its channels, and nothing beside. The file's ports are not heeded. `value` is the
/// member "model" of the configuration; README.md shows it. Throws ConfigError.
void ReadModel(const Json::Value& value, const std::string& where, CameraConfig& camera);

}  // namespace simcam
