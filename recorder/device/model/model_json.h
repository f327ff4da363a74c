#pragma once

#include <json/json.h>

#include <string>

#include "recorder/device/model/model.h"
#include "recorder/device/model/model_facts.h"

namespace recorder {

/// The model of an entry of a model file with these sources. The file follows the schema: that has made sure of all
/// types.
Model ModelOfJson(const std::string& vendor, const Json::Value& json, const ModelSources& sources);

}  // namespace recorder
