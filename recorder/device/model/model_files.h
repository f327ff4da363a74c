#pragma once

#include <memory>
#include <string>
#include <vector>

#include "recorder/device/model/model.h"
#include "recorder/device/model/model_catalog.h"
#include "recorder/device/model/model_reader.h"

// The models that this recorder knows: the files "*.json" of the shipped folder, beside their "schema.json", and of the
// user's own, where an update changes nothing.
// A file with a mistake is passed over and named in the log; all other vendors are served.
// Thread: any; what is handed out stays as it is while somebody holds it.

namespace recorder {

struct Config;

/// Where model files are.
struct ModelFolders {
  std::string shipped;
  std::string own = {};  ///< "": none; else it need not be there
};

/// The folders of a configuration; the own one is in the state folder.
ModelFolders ModelFoldersOf(const Config& config);

/// Sets the folders of the model files. Call once, before the first request.
void SetModelFolders(const ModelFolders& folders);

/// The current catalog: read at the first call, and again when a file was added, removed or changed.
std::shared_ptr<const ModelCatalog> Models();

/// Reads all model files of `folders`, without keeping or logging anything.
ModelCatalog ReadModels(const ModelFolders& folders);

/// The model, and where it was found.
struct FoundModel {
  std::shared_ptr<const Model> model;  ///< null: not known
  std::string file;                    ///< "" for a built-in one
  ModelOrigin origin = ModelOrigin::kBuiltIn;
};

/// Finds a model; of a built-in vendor every name is one of its only model. A non-empty `modelFile` names the file to
/// look into, which need not be in the folders.
FoundModel FindModel(const std::string& vendor, const std::string& model, const std::string& modelFile = "");

/// Reads `text` as that of a model file at `path`, which need not be there. Null, and what is wrong appended to
/// `mistakes`, when it is none.
std::shared_ptr<const VendorModels> ReadModelText(const std::string& text, const std::string& path,
                                                  std::vector<ModelMistake>& mistakes);

}  // namespace recorder
