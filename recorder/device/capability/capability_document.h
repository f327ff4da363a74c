#pragma once

#include <json/json.h>

#include "recorder/device/model/model.h"

namespace recorder {

/// The capability object of a model, as clients get it.
Json::Value CapabilityDocument(const Model& model);

}  // namespace recorder
