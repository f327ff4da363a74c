#pragma once

#include <string>
#include <vector>

#include "recorder/device/model/nearest_models.h"
#include "recorder/records/records.h"
#include "recorder/utility/config.h"

namespace recorder {

/// All models of the files, and those built in.
std::vector<ModelName> KnownModels(const Config& config);

/// Gives the camera the recorder's own names of the model that a person means, as the page understands it: capitals
/// make no difference, both names may stand in one of the two texts, and a vendor's only model need not be named. When
/// there is no such model, the camera stays as it is, and the result says so and names the nearest; else it is "".
std::string NameModel(CameraRecord& camera, const std::vector<ModelName>& models);

}  // namespace recorder
