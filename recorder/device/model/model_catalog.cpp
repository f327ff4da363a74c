#include "recorder/device/model/model_catalog.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include "recorder/device/model/built_in_models.h"

namespace recorder {
namespace {

using Place = ModelCatalog::Place;
using VendorAndName = std::pair<std::string_view, std::string_view>;

VendorAndName NamesOf(const Model& model) { return {model.vendor, model.name}; }

class CatalogReader {
 public:
  explicit CatalogReader(const std::string& schema) : schema_(schema), reader_(schema) {}

  void Read(const std::vector<ModelFileState>& files, ModelOrigin origin) {
    for (const ModelFileState& file : files) {
      if (std::filesystem::path(file.path).filename() == std::filesystem::path(schema_).filename()) continue;
      auto vendor = reader_.Read(file.path, catalog_.mistakes);
      if (!vendor) continue;
      vendor->origin = origin;
      if (const auto mistake = FindMistake(*vendor)) {
        Report(*vendor, "/vendor", *mistake);
      } else {
        Take(std::move(*vendor));
      }
    }
  }

  ModelCatalog Finish() {
    std::sort(catalog_.vendors.begin(), catalog_.vendors.end(), [](const VendorModels& a, const VendorModels& b) {
      return std::tie(a.vendor, a.origin) < std::tie(b.vendor, b.origin);
    });
    MakeIndex();
    return std::move(catalog_);
  }

 private:
  using VendorOfFolder = std::pair<std::string, ModelOrigin>;

  void Report(const VendorModels& vendor, std::string place, std::string text) {
    catalog_.mistakes.push_back({vendor.file, std::move(place), std::move(text)});
  }

  const VendorModels* Find(const VendorOfFolder& vendor) const {
    const auto found = places_.find(vendor);
    return found == places_.end() ? nullptr : &catalog_.vendors[found->second];
  }

  std::optional<std::string> FindMistake(const VendorModels& vendor) const {
    if (BuiltInModel(vendor.vendor)) return "This vendor name is built in.";
    const VendorModels* same = Find({vendor.vendor, vendor.origin});
    if (same != nullptr) return "This vendor has a file already: " + same->file;
    return std::nullopt;
  }

  void Take(VendorModels vendor) {
    if (vendor.origin == ModelOrigin::kOwn) RemoveShipped(vendor);
    if (vendor.models.empty()) return;
    places_.emplace(VendorOfFolder{vendor.vendor, vendor.origin}, catalog_.vendors.size());
    catalog_.vendors.push_back(std::move(vendor));
  }

  void RemoveShipped(VendorModels& own) {
    const VendorModels* shipped = Find({own.vendor, ModelOrigin::kShipped});
    if (shipped == nullptr) return;
    std::set<std::string_view> names;
    for (const Model& model : shipped->models) names.insert(model.name);
    for (std::size_t i = 0; i < own.models.size(); ++i) {
      if (!names.contains(own.models[i].name)) continue;
      Report(own, "/models/" + std::to_string(i) + "/name", "This model has a place already: " + shipped->file);
    }
    std::erase_if(own.models, [&](const Model& model) { return names.contains(model.name); });
  }

  void MakeIndex() {
    for (std::uint32_t vendor = 0; vendor < catalog_.vendors.size(); ++vendor) {
      for (std::uint32_t i = 0; i < catalog_.vendors[vendor].models.size(); ++i) catalog_.byName.push_back({vendor, i});
    }
    catalog_.byName.shrink_to_fit();
    std::sort(catalog_.byName.begin(), catalog_.byName.end(),
              [&](Place a, Place b) { return NamesOf(catalog_.At(a)) < NamesOf(catalog_.At(b)); });
  }

  const std::string schema_;
  const ModelReader reader_;
  ModelCatalog catalog_;
  std::map<VendorOfFolder, std::size_t> places_;  // in catalog_.vendors
};

}  // namespace

std::optional<ModelCatalog::Place> ModelCatalog::Find(std::string_view vendor, std::string_view name) const {
  const VendorAndName wanted{vendor, name};
  const auto found =
      std::lower_bound(byName.begin(), byName.end(), wanted,
                       [&](Place place, const VendorAndName& names) { return NamesOf(At(place)) < names; });
  if (found == byName.end() || NamesOf(At(*found)) != wanted) return std::nullopt;
  return *found;
}

ModelCatalog ReadCatalog(const std::string& schema, const std::vector<ModelFileState>& shipped,
                         const std::vector<ModelFileState>& own) {
  CatalogReader reader(schema);
  reader.Read(shipped, ModelOrigin::kShipped);
  reader.Read(own, ModelOrigin::kOwn);
  return reader.Finish();
}

}  // namespace recorder
