#include "recorder/ctl/camera/known_models.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>

#include "recorder/device/model/built_in_models.h"
#include "recorder/device/model/model_files.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

constexpr std::size_t kMostNearest = 2;

/// `text` in lower case, with one blank between words.
std::string Plain(const std::string& text) {
  std::istringstream words(LowerCase(text));
  std::string plain;
  for (std::string word; words >> word;) plain += (plain.empty() ? "" : " ") + word;
  return plain;
}

std::string Label(const ModelName& name) { return name.model.empty() ? name.vendor : name.vendor + " " + name.model; }

/// How many signs must be changed, put in or left out to make one text of the other (Levenshtein).
std::size_t Distance(std::string_view one, std::string_view other) {
  std::vector<std::size_t> row(other.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (std::size_t i = 0; i < one.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i + 1);
    for (std::size_t j = 0; j < other.size(); ++j) {
      const std::size_t swap = diagonal + (one[i] == other[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({row[j] + 1, diagonal + 1, swap});
    }
  }
  return row.back();
}

/// Vendors whose only model every name means.
bool IsBuiltIn(const std::string& vendor) { return BuiltInModel(vendor) != nullptr; }

/// `wanted`: vendor and model as Plain gives them.
std::optional<ModelName> Find(const std::vector<ModelName>& models, const std::string& wanted) {
  std::vector<ModelName> ofVendor;
  for (const ModelName& name : models) {
    const std::string maker = LowerCase(name.vendor);
    if (Plain(Label(name)) == wanted) return name;
    if (wanted == maker || wanted.starts_with(maker + " ")) ofVendor.push_back(name);
  }
  const bool isOnly = ofVendor.size() == 1;
  if (isOnly && (IsBuiltIn(ofVendor[0].vendor) || wanted == LowerCase(ofVendor[0].vendor))) return ofVendor[0];
  return std::nullopt;
}

/// How unlike `wanted` a model is: those of the vendor that is named come first.
std::pair<bool, std::size_t> Unlikeness(const ModelName& name, const std::string& wanted) {
  const std::string vendor = LowerCase(name.vendor);
  const bool isOfVendor = wanted.starts_with(vendor + " ");
  const bool namesVendorAlone = wanted.find(' ') == std::string::npos;
  return {!isOfVendor, Distance(wanted, namesVendorAlone ? vendor : Plain(Label(name)))};
}

/// The models most like `wanted`, with commas between them.
std::string Nearest(const std::vector<ModelName>& models, const std::string& wanted) {
  std::vector<std::pair<std::pair<bool, std::size_t>, std::string>> byUnlikeness;
  byUnlikeness.reserve(models.size());
  for (const ModelName& name : models) byUnlikeness.emplace_back(Unlikeness(name, wanted), Label(name));
  std::sort(byUnlikeness.begin(), byUnlikeness.end());
  byUnlikeness.resize(std::min(kMostNearest, byUnlikeness.size()));
  std::string text;
  for (const auto& [unlikeness, label] : byUnlikeness) text += (text.empty() ? "" : ", ") + label;
  return text;
}

}  // namespace

std::vector<ModelName> KnownModels(const Config& config) {
  std::vector<ModelName> names;
  for (const auto& model : BuiltInModels()) names.push_back({model->vendor, model->name});
  for (const VendorModels& vendor : ReadModels(ModelFoldersOf(config)).vendors) {
    for (const Model& model : vendor.models) names.push_back({model.vendor, model.name});
  }
  return names;
}

std::string NameModel(CameraRecord& camera, const std::vector<ModelName>& models) {
  const std::string wanted = Plain(camera.vendor + " " + camera.model);
  const auto name = Find(models, wanted);
  if (!name) return "no such model is known; nearest: " + Nearest(models, wanted);
  camera.vendor = name->vendor;
  camera.model = name->model;
  return "";
}

}  // namespace recorder
