#pragma once

#include <memory>
#include <string>
#include <vector>

#include "recorder/device/model/model.h"
#include "recorder/device/model/model_reader.h"

// The models that this recorder knows: the files "*.json" of one folder, one a vendor, beside their "schema.json".
// A file with a mistake is passed over and named in the log; all other vendors are served.
// Thread: any; what is handed out stays as it is while somebody holds it.

namespace recorder {

/// Sets the folder of the model files. Call once, before the first request.
void SetModelsFolder(std::string folder);

/// All models of the files, by vendor; the built-in ones are not among them.
struct ModelCatalog {
  std::vector<VendorModels> vendors;   ///< sorted by vendor
  std::vector<ModelMistake> mistakes;  ///< of the files that were passed over
};

/// The current catalog: read at the first call, and again when a file was added, removed or changed.
std::shared_ptr<const ModelCatalog> Models();

/// Reads all model files of `folder`, without keeping or logging anything.
ModelCatalog ReadModels(const std::string& folder);

/// The model, and the file it was found in ("" for a built-in one).
struct FoundModel {
  std::shared_ptr<const Model> model;  ///< null: not known
  std::string file;
};

/// Finds a model; of a built-in vendor every name is one of its only model. A non-empty `modelFile` names the file to
/// look into, which need not be in the folder.
FoundModel FindModel(const std::string& vendor, const std::string& model, const std::string& modelFile = "");

/// Reads `text` as that of a model file at `path`, which need not be there. Null, and what is wrong appended to
/// `mistakes`, when it is none.
std::shared_ptr<const VendorModels> ReadModelText(const std::string& text, const std::string& path,
                                                  std::vector<ModelMistake>& mistakes);

}  // namespace recorder
