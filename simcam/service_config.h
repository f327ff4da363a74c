#pragma once

#include <json/json.h>

#include <string>

#include "simcam/config.h"

namespace simcam {

/// Read the members "onvif" and "psia" of a camera; `where` names the place. Both throw ConfigError, also when the
/// streams that are there already do not fit. ReadOnvif may give stream and snapshot paths a query.

void ReadOnvif(const Json::Value& value, const std::string& where, CameraConfig& camera);
void ReadPsia(const Json::Value& value, const std::string& where, CameraConfig& camera);

}  // namespace simcam
