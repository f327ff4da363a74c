#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "recorder/utility/handle.h"

namespace recorder {

/// Reads a regular file of at most kLargestFile. Throws std::system_error that names the file. Any thread.
std::string ReadFile(const std::filesystem::path& path);

/// Puts a file with `content` in the place of `path`, whole or not at all, also when the power fails: what was there
/// stays until the new file is on the disk. Throws std::system_error that names the file. Any thread and process; the
/// last of several wins.
void ReplaceFile(const std::filesystem::path& path, std::string_view content, mode_t mode = 0600);

/// Gives a file or folder another name; what has that name already goes, if it is a file or an empty folder. The new
/// name is on the disk when this returns. Throws std::system_error that names the file.
void Rename(const std::filesystem::path& from, const std::filesystem::path& to);

/// Returns when what was made, renamed or removed in the folder is on the disk. Throws std::system_error that names it.
void SyncFolder(const std::filesystem::path& folder);

/// Removes the file, if it is there: also when the power fails, it is gone when this returns. Throws std::system_error
/// that names the file.
void RemoveFile(const std::filesystem::path& path);

/// Makes a file with `content` (mode 0600), unless `path` exists: then that stays as it is. Of several that try at once
/// one wins, and the file is never seen half written. Throws std::system_error that names the file.
void CreateFileOnce(const std::filesystem::path& path, std::string_view content);

/// What tells one state of a file or folder from another: all zero when there is none. A file that was put in another's
/// place has another stamp, and so has one that was written to, unless both happened within a tick of the clock.
struct FileStamp {
  dev_t device = 0;
  ino_t inode = 0;
  off_t size = 0;                  // bytes
  std::int64_t modified = 0;       // nanoseconds since 1970-01-01 00:00 UTC
  std::int64_t statusChanged = 0;  // the same

  bool operator==(const FileStamp&) const = default;
};

/// Any thread.
FileStamp StampOf(const std::filesystem::path& path);

/// Makes the folder with mode 0700, parents included, unless it exists. Throws std::system_error that names the folder,
/// also when one that exists is another user's, or group or others may write to it.
void MakePrivateFolder(const std::filesystem::path& folder);

/// Waits for the lock on `folder`, which one holder at a time has until the result is destroyed. Throws
/// std::system_error that names the folder.
[[nodiscard]] FileDescriptor LockFolder(const std::filesystem::path& folder);

}  // namespace recorder
