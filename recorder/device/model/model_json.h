#pragma once

#include <json/json.h>

#include <string>

#include "recorder/device/model/model.h"

namespace recorder {

/// The model of an entry of a model file, which follows the schema: that has made sure of all types.
Model ModelOfJson(const std::string& vendor, const Json::Value& json);

}  // namespace recorder
