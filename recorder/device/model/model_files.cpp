#include "recorder/device/model/model_files.h"

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <utility>

#include "platform/utility.h"
#include "recorder/device/model/built_in_models.h"
#include "recorder/device/model/model_folder.h"
#include "recorder/utility/config.h"
#include "recorder/utility/files.h"
#include "recorder/utility/state_files.h"

namespace recorder {
namespace {

std::string SchemaOf(const std::string& folder) { return (std::filesystem::path(folder) / "schema.json").string(); }

void LogMistake(const ModelMistake& mistake) {
  VTPrintf(LOG_TYPE_FAILURE, nullptr, nullptr, "recorder/device/model/model_files", __LINE__, __func__,
           "Passed over for a mistake: %s: %s%s%s\n", mistake.file.c_str(), mistake.place.c_str(),
           mistake.place.empty() ? "" : ": ", mistake.text.c_str());
}

/// The catalog of the process, read again when a folder has changed.
class CurrentCatalog {
 public:
  void SetFolders(const ModelFolders& folders) {
    const std::lock_guard lock(mutex_);
    shipped_ = ModelFolder(folders.shipped);
    own_ = ModelFolder(folders.own);
    catalog_ = nullptr;
  }

  std::shared_ptr<const ModelCatalog> Get() {
    const std::lock_guard lock(mutex_);
    const bool hasChanged[] = {shipped_.HasChanged(), own_.HasChanged()};
    if (hasChanged[0] || hasChanged[1]) catalog_ = nullptr;
    if (catalog_) return catalog_;
    const std::string schema = SchemaOf(shipped_.Path());
    catalog_ = std::make_shared<const ModelCatalog>(ReadCatalog(schema, shipped_.Files(), own_.Files()));
    for (const ModelMistake& mistake : catalog_->mistakes) LogMistake(mistake);
    return catalog_;
  }

  /// A reader with the folder's schema, read again when that has changed.
  std::shared_ptr<const ModelReader> Reader() {
    const std::lock_guard lock(mutex_);
    const std::string file = SchemaOf(shipped_.Path());
    const FileStamp schema = StampOf(file);
    if (!reader_ || schema != schema_) reader_ = std::make_shared<const ModelReader>(file);
    schema_ = schema;
    return reader_;
  }

 private:
  std::mutex mutex_;
  ModelFolder shipped_{""};
  ModelFolder own_{""};
  std::shared_ptr<const ModelCatalog> catalog_;
  FileStamp schema_;
  std::shared_ptr<const ModelReader> reader_;  // with that schema
};

CurrentCatalog& Current() {
  static CurrentCatalog current;
  return current;
}

FoundModel FindInFile(const std::string& vendor, const std::string& name, const std::string& file) {
  std::vector<ModelMistake> mistakes;
  const std::shared_ptr<const VendorModels> found = Current().Reader()->Read(file, mistakes);
  for (const ModelMistake& mistake : mistakes) LogMistake(mistake);
  if (!found || found->vendor != vendor) return {};
  const auto model = std::find_if(found->models.begin(), found->models.end(),
                                  [&](const Model& candidate) { return candidate.name == name; });
  if (model == found->models.end()) return {};
  return {std::shared_ptr<const Model>(found, &*model), file, found->origin};
}

}  // namespace

ModelFolders ModelFoldersOf(const Config& config) {
  return {config.modelsFolder.string(), (config.stateFolder / kModelsFolder).string()};
}

void SetModelFolders(const ModelFolders& folders) { Current().SetFolders(folders); }

std::shared_ptr<const ModelCatalog> Models() { return Current().Get(); }

ModelCatalog ReadModels(const ModelFolders& folders) {
  return ReadCatalog(SchemaOf(folders.shipped), ListModelFolder(folders.shipped), ListModelFolder(folders.own));
}

FoundModel FindModel(const std::string& vendor, const std::string& model, const std::string& modelFile) {
  if (auto builtIn = BuiltInModel(vendor)) return {std::move(builtIn), "", ModelOrigin::kBuiltIn};
  if (!modelFile.empty()) return FindInFile(vendor, model, modelFile);
  const auto catalog = Models();
  const auto place = catalog->Find(vendor, model);
  if (!place) return {};
  const VendorModels& found = catalog->vendors[place->vendor];
  return {std::shared_ptr<const Model>(catalog, &catalog->At(*place)), found.file, found.origin};
}

std::shared_ptr<const VendorModels> ReadModelText(const std::string& text, const std::string& path,
                                                  std::vector<ModelMistake>& mistakes) {
  return Current().Reader()->ReadText(text, path, mistakes);
}

}  // namespace recorder
