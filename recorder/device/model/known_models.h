#pragma once

#include <string>
#include <vector>

#include "recorder/device/model/model_catalog.h"
#include "recorder/device/model/nearest_models.h"
#include "recorder/records/records.h"
#include "recorder/utility/config.h"

namespace recorder {

/// All models of the files, and those built in.
std::vector<ModelName> KnownModels(const ModelCatalog& files);
std::vector<ModelName> KnownModels(const Config& config);

/// Gives the camera the recorder's own names of the model that a person means, as the page understands it: capitals
/// make no difference, both names may stand in one of the two texts, and a vendor's only model need not be named. False
/// when there is no such model; then the camera stays as it is.
bool TakeModelName(CameraRecord& camera, const std::vector<ModelName>& models);

/// The same for people: "", or a text that there is none, with the nearest ones.
std::string NameModel(CameraRecord& camera, const std::vector<ModelName>& models);

}  // namespace recorder
