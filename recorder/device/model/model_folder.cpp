#include "recorder/device/model/model_folder.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <utility>

namespace recorder {
namespace {

namespace fs = std::filesystem;

std::vector<ModelFileState> List(const std::string& folder, std::error_code& error) {
  std::vector<ModelFileState> files;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    if (entry->path().extension() == ".json") files.push_back({entry->path().string(), StampOf(entry->path())});
  }
  std::sort(files.begin(), files.end(), [](const auto& a, const auto& b) { return a.path < b.path; });
  return files;
}

/// Changes so close to each other that the file system's clock cannot tell them apart are past.
bool IsOld(const FileStamp& folder) {
  using namespace std::chrono;
  constexpr seconds kAge{2};
  const auto now = duration_cast<nanoseconds>(system_clock::now().time_since_epoch());
  return nanoseconds(folder.modified) + kAge < now;
}

}  // namespace

std::vector<ModelFileState> ListModelFolder(const std::string& folder) {
  std::error_code ignored;
  return List(folder, ignored);
}

bool ModelFolder::HasChanged() {
  if (IsStillMissing()) return false;
  if (isSettled_ && !watch_.MayHaveChanged()) return false;
  if (isSettled_ && StampOf(folder_) == stamp_ && AreFilesTheSame()) return false;
  stamp_ = StampOf(folder_);
  std::error_code error;
  std::vector<ModelFileState> files = List(folder_, error);
  isSettled_ = !error && IsOld(stamp_);
  return std::exchange(files_, files) != files;
}

bool ModelFolder::IsStillMissing() const { return stamp_ == FileStamp() && StampOf(folder_) == stamp_; }

bool ModelFolder::AreFilesTheSame() const {
  return std::all_of(files_.begin(), files_.end(),
                     [](const ModelFileState& file) { return StampOf(file.path) == file.stamp; });
}

}  // namespace recorder
