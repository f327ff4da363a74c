#pragma once

#include <filesystem>

#include "recorder/utility/clock.h"
#include "recorder/utility/handle.h"

namespace recorder {

/// Tells for the price of one system call that nothing has changed in a folder: no file came, went or was written to
/// (inotify(7)). What happens without a word of the system, as on a network's file system or behind a link, is told
/// within a second. One thread at a time.
class FolderWatch {
 public:
  explicit FolderWatch(const std::filesystem::path& folder);

  /// True when something may have changed since the call before; the first time, always.
  bool MayHaveChanged();

 private:
  bool HasNews();

  std::filesystem::path folder_;
  FileDescriptor events_;  // none: there is no such folder, or the system has no watch to give
  Clock::time_point lookAt_;
};

}  // namespace recorder
