#include "recorder/device/model/model_files.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <mutex>
#include <system_error>
#include <tuple>
#include <utility>

#include "platform/utility.h"
#include "recorder/device/model/built_in_models.h"
#include "recorder/utility/files.h"
#include "recorder/utility/folder_watch.h"

namespace recorder {
namespace {

namespace fs = std::filesystem;

constexpr char kSchemaName[] = "schema.json";

std::string SchemaOf(const std::string& folder) { return (fs::path(folder) / kSchemaName).string(); }

struct FileState {
  std::string path;
  FileStamp stamp;

  bool operator==(const FileState&) const = default;
};

/// What the folder holds, sorted by path: two equal answers mean that nothing has changed. Less than all of it after an
/// error.
std::vector<FileState> ListFolder(const std::string& folder, std::error_code& error) {
  std::vector<FileState> files;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    if (entry->path().extension() == ".json") files.push_back({entry->path().string(), StampOf(entry->path())});
  }
  std::sort(files.begin(), files.end(), [](const auto& a, const auto& b) { return a.path < b.path; });
  return files;
}

/// A folder, and what it held when it was last listed.
class WatchedFolder {
 public:
  explicit WatchedFolder(std::string folder) : folder_(std::move(folder)), watch_(folder_) {}

  /// Looks again: true when a file was added, removed or changed since the last look.
  bool HasChanged() {
    if (isSettled_ && !watch_.MayHaveChanged()) return false;
    if (isSettled_ && StampOf(folder_) == stamp_ && AreFilesTheSame()) return false;
    stamp_ = StampOf(folder_);
    std::error_code error;
    std::vector<FileState> files = ListFolder(folder_, error);
    isSettled_ = !error && IsOld(stamp_);
    return std::exchange(files_, files) != files;
  }

  const std::string& Path() const { return folder_; }
  const std::vector<FileState>& Files() const { return files_; }

 private:
  /// Changes so close to each other that the file system's clock cannot tell them apart are past.
  static bool IsOld(const FileStamp& folder) {
    using namespace std::chrono;
    constexpr seconds kAge{2};
    const auto now = duration_cast<nanoseconds>(system_clock::now().time_since_epoch());
    return nanoseconds(folder.modified) + kAge < now;
  }

  bool AreFilesTheSame() const {
    return std::all_of(files_.begin(), files_.end(),
                       [](const FileState& file) { return StampOf(file.path) == file.stamp; });
  }

  std::string folder_;
  FolderWatch watch_;
  FileStamp stamp_;
  bool isSettled_ = false;  // an unchanged stamp means that no file came or went
  std::vector<FileState> files_;
};

ModelCatalog ReadFiles(const std::string& folder, const std::vector<FileState>& files) {
  const ModelReader reader(SchemaOf(folder));
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
  VTPrintf(LOG_TYPE_FAILURE, nullptr, nullptr, "recorder/device/model/model_files", __LINE__, __func__,
           "Model file %s is passed over: %s%s%s\n", mistake.file.c_str(), mistake.place.c_str(),
           mistake.place.empty() ? "" : ": ", mistake.text.c_str());
}

/// The catalog of the process, read again when the folder has changed.
class CurrentCatalog {
 public:
  void SetFolder(std::string folder) {
    const std::lock_guard lock(mutex_);
    folder_ = WatchedFolder(std::move(folder));
    catalog_ = nullptr;
  }

  std::shared_ptr<const ModelCatalog> Get() {
    const std::lock_guard lock(mutex_);
    if (folder_.HasChanged()) catalog_ = nullptr;
    if (catalog_) return catalog_;
    catalog_ = std::make_shared<const ModelCatalog>(ReadFiles(folder_.Path(), folder_.Files()));
    for (const ModelMistake& mistake : catalog_->mistakes) LogMistake(mistake);
    return catalog_;
  }

  /// A reader with the folder's schema, read again when that has changed.
  std::shared_ptr<const ModelReader> Reader() {
    const std::lock_guard lock(mutex_);
    const std::string file = SchemaOf(folder_.Path());
    const FileStamp schema = StampOf(file);
    if (!reader_ || schema != schema_) reader_ = std::make_shared<const ModelReader>(file);
    schema_ = schema;
    return reader_;
  }

 private:
  std::mutex mutex_;
  WatchedFolder folder_{""};
  std::shared_ptr<const ModelCatalog> catalog_;
  FileStamp schema_;
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

ModelCatalog ReadModels(const std::string& folder) {
  std::error_code ignored;  // a folder that cannot be read holds no models
  return ReadFiles(folder, ListFolder(folder, ignored));
}

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
