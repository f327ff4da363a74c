#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "recorder/device/model/model_folder.h"
#include "recorder/device/model/model_reader.h"

namespace recorder {

/// All models of the files; the built-in ones are not among them.
struct ModelCatalog {
  /// Where a model stands: `vendors[vendor].models[model]`.
  struct Place {
    std::uint32_t vendor;
    std::uint32_t model;
  };

  std::vector<VendorModels> vendors;   ///< one a file, sorted by vendor, the shipped file first
  std::vector<ModelMistake> mistakes;  ///< of the files and models that were passed over
  std::vector<Place> byName;           ///< all models, sorted by vendor and name

  const Model& At(Place place) const { return vendors[place.vendor].models[place.model]; }

  /// Nothing for a model that no file knows.
  std::optional<Place> Find(std::string_view vendor, std::string_view name) const;
};

/// Reads the files of the shipped folder and of the user's own, and checks them by the schema in the file `schema`.
/// Files of one vendor in both folders add up; in one folder a vendor has one file. A model that stands in both counts
/// as the shipped file has it.
ModelCatalog ReadCatalog(const std::string& schema, const std::vector<ModelFileState>& shipped,
                         const std::vector<ModelFileState>& own);

}  // namespace recorder
