#include "recorder/device/model/known_models.h"

#include <optional>

#include "recorder/device/model/built_in_models.h"
#include "recorder/device/model/model_files.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

constexpr std::size_t kMostNearest = 2;

/// Vendors whose only model every name means.
bool IsBuiltIn(const std::string& vendor) { return BuiltInModel(vendor) != nullptr; }

/// `wanted`: vendor and model as PlainName gives them.
std::optional<ModelName> Find(const std::vector<ModelName>& models, const std::string& wanted) {
  std::vector<ModelName> ofVendor;
  for (const ModelName& name : models) {
    const std::string maker = LowerCase(name.vendor);
    if (PlainName(LabelOf(name)) == wanted) return name;
    if (wanted == maker || wanted.starts_with(maker + " ")) ofVendor.push_back(name);
  }
  const bool isOnly = ofVendor.size() == 1;
  if (isOnly && (IsBuiltIn(ofVendor[0].vendor) || wanted == LowerCase(ofVendor[0].vendor))) return ofVendor[0];
  return std::nullopt;
}

std::string WantedName(const CameraRecord& camera) { return PlainName(camera.vendor + " " + camera.model); }

/// The models most like `wanted`, with commas between them.
std::string Nearest(const std::vector<ModelName>& models, const std::string& wanted) {
  std::string text;
  for (const ModelName& name : NearestModels(models, wanted, kMostNearest)) {
    text += (text.empty() ? "" : ", ") + LabelOf(name);
  }
  return text;
}

}  // namespace

std::vector<ModelName> KnownModels(const ModelCatalog& files) {
  std::vector<ModelName> names;
  for (const auto& model : BuiltInModels()) names.push_back({model->vendor, model->name});
  for (const VendorModels& vendor : files.vendors) {
    for (const Model& model : vendor.models) names.push_back({model.vendor, model.name});
  }
  return names;
}

std::vector<ModelName> KnownModels(const Config& config) { return KnownModels(ReadModels(ModelFoldersOf(config))); }

bool TakeModelName(CameraRecord& camera, const std::vector<ModelName>& models) {
  const auto name = Find(models, WantedName(camera));
  if (!name) return false;
  camera.vendor = name->vendor;
  camera.model = name->model;
  return true;
}

std::string NameModel(CameraRecord& camera, const std::vector<ModelName>& models) {
  if (TakeModelName(camera, models)) return "";
  return "no such model is known; nearest: " + Nearest(models, WantedName(camera));
}

}  // namespace recorder
