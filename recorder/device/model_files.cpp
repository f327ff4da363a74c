#include "recorder/device/model_files.h"

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <system_error>
#include <tuple>
#include <utility>

#include "platform/utility.h"
#include "recorder/device/built_in_models.h"

namespace recorder {
namespace {

namespace fs = std::filesystem;

constexpr char kSchemaName[] = "schema.json";

struct FileState {
  std::string path;
  fs::file_time_type time;
  std::uintmax_t size = 0;

  bool operator==(const FileState&) const = default;
};

FileState StateOf(const fs::path& path) {
  std::error_code ignored;  // a file that has just vanished is told by its reader
  return {path.string(), fs::last_write_time(path, ignored), fs::file_size(path, ignored)};
}

/// What the folder holds, sorted by path: two equal answers mean that nothing has changed.
std::vector<FileState> ListFolder(const std::string& folder) {
  std::vector<FileState> files;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    if (entry->path().extension() == ".json") files.push_back(StateOf(entry->path()));
  }
  std::sort(files.begin(), files.end(), [](const auto& a, const auto& b) { return a.path < b.path; });
  return files;
}

ModelCatalog ReadFiles(const std::string& folder, const std::vector<FileState>& files) {
  const ModelReader reader((fs::path(folder) / kSchemaName).string());
  ModelCatalog catalog;
  for (const FileState& file : files) {
    if (fs::path(file.path).filename() == kSchemaName) continue;
    auto vendor = reader.Read(file.path, catalog.mistakes);
    if (!vendor) continue;
    if (BuiltInModel(vendor->vendor)) {
      catalog.mistakes.push_back({file.path, "/vendor", "This vendor name is built in."});
      continue;
    }
    const auto same = std::find_if(catalog.vendors.begin(), catalog.vendors.end(),
                                   [&](const VendorModels& other) { return other.vendor == vendor->vendor; });
    if (same != catalog.vendors.end()) {
      catalog.mistakes.push_back({file.path, "/vendor", "This vendor has a file already: " + same->file});
      continue;
    }
    catalog.vendors.push_back(std::move(*vendor));
  }
  std::sort(catalog.vendors.begin(), catalog.vendors.end(),
            [](const VendorModels& a, const VendorModels& b) { return a.vendor < b.vendor; });
  return catalog;
}

void LogMistake(const ModelMistake& mistake) {
  VTPrintf(LOG_TYPE_FAILURE, nullptr, nullptr, "recorder/device/model_files", __LINE__, __func__,
           "Model file %s is passed over: %s%s%s\n", mistake.file.c_str(), mistake.place.c_str(),
           mistake.place.empty() ? "" : ": ", mistake.text.c_str());
}

/// The catalog of the process, read again when the folder has changed.
class CurrentCatalog {
 public:
  void SetFolder(std::string folder) {
    const std::lock_guard lock(mutex_);
    folder_ = std::move(folder);
    catalog_ = nullptr;
  }

  std::shared_ptr<const ModelCatalog> Get() {
    const std::lock_guard lock(mutex_);
    std::vector<FileState> files = ListFolder(folder_);
    if (catalog_ && files == files_) return catalog_;
    catalog_ = std::make_shared<const ModelCatalog>(ReadFiles(folder_, files));
    files_ = std::move(files);
    for (const ModelMistake& mistake : catalog_->mistakes) LogMistake(mistake);
    return catalog_;
  }

  /// A reader with the folder's schema, read again when that has changed.
  std::shared_ptr<const ModelReader> Reader() {
    const std::lock_guard lock(mutex_);
    const FileState schema = StateOf(fs::path(folder_) / kSchemaName);
    if (!reader_ || schema != schema_) reader_ = std::make_shared<const ModelReader>(schema.path);
    schema_ = schema;
    return reader_;
  }

 private:
  std::mutex mutex_;
  std::string folder_;
  std::vector<FileState> files_;
  std::shared_ptr<const ModelCatalog> catalog_;
  FileState schema_;
  std::shared_ptr<const ModelReader> reader_;  // with that schema
};

CurrentCatalog& Current() {
  static CurrentCatalog current;
  return current;
}

/// Keeps `owner` alive as long as somebody holds the model in it.
template <class Owner>
FoundModel FindIn(const std::shared_ptr<const Owner>& owner, const VendorModels& vendor, const std::string& name) {
  const auto model = std::find_if(vendor.models.begin(), vendor.models.end(),
                                  [&](const Model& candidate) { return candidate.name == name; });
  if (model == vendor.models.end()) return {};
  return {std::shared_ptr<const Model>(owner, &*model), vendor.file};
}

FoundModel FindInFile(const std::string& vendor, const std::string& name, const std::string& file) {
  std::vector<ModelMistake> mistakes;
  const std::shared_ptr<const VendorModels> found = Current().Reader()->Read(file, mistakes);
  for (const ModelMistake& mistake : mistakes) LogMistake(mistake);
  return found && found->vendor == vendor ? FindIn(found, *found, name) : FoundModel{};
}

}  // namespace

void SetModelsFolder(std::string folder) { Current().SetFolder(std::move(folder)); }

std::shared_ptr<const ModelCatalog> Models() { return Current().Get(); }

ModelCatalog ReadModels(const std::string& folder) { return ReadFiles(folder, ListFolder(folder)); }

FoundModel FindModel(const std::string& vendor, const std::string& model, const std::string& modelFile) {
  if (auto builtIn = BuiltInModel(vendor)) return {std::move(builtIn), ""};
  if (!modelFile.empty()) return FindInFile(vendor, model, modelFile);
  const auto catalog = Models();
  const auto found = std::find_if(catalog->vendors.begin(), catalog->vendors.end(),
                                  [&](const VendorModels& candidate) { return candidate.vendor == vendor; });
  return found == catalog->vendors.end() ? FoundModel{} : FindIn(catalog, *found, model);
}

std::shared_ptr<const VendorModels> ReadModelText(const std::string& text, const std::string& path,
                                                  std::vector<ModelMistake>& mistakes) {
  return Current().Reader()->ReadText(text, path, mistakes);
}

}  // namespace recorder
