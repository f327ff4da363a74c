#pragma once

#include <json/json.h>

#include <memory>

#include "recorder/device/model/model.h"

namespace recorder {

/// The capability object of a model, as clients get it. Any thread.
Json::Value CapabilityDocument(const std::shared_ptr<const Model>& model);

}  // namespace recorder
