#pragma once

#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "recorder/access/grant.h"
#include "recorder/utility/files.h"
#include "recorder/utility/folder_watch.h"

namespace recorder {

/// Who is let in by the file of grants as it is now: it is read again when it was changed (see FolderWatch). Any
/// thread.
class GrantList {
 public:
  explicit GrantList(std::filesystem::path stateFolder)
      : stateFolder_(std::move(stateFolder)), file_(GrantsFile(stateFolder_)), watch_(stateFolder_) {}

  /// The grant that `secret` belongs to, if it is of this kind and not over. What is compared is a hash, so that the
  /// time it takes tells nothing about a secret. Throws std::system_error that names the file.
  std::optional<Grant> Find(Grant::Kind kind, std::string_view secret);

 private:
  void Refresh();

  const std::filesystem::path stateFolder_;
  const std::filesystem::path file_;
  std::mutex mutex_;
  FolderWatch watch_;
  std::optional<FileStamp> stamp_;
  std::unordered_map<std::string, Grant> grants_;  // by hash
};

}  // namespace recorder
