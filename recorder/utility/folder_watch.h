#pragma once

#include <chrono>
#include <filesystem>

#include "recorder/utility/clock.h"
#include "recorder/utility/handle.h"

namespace recorder {

/// Tells for the price of one system call that nothing has changed in a folder: no file came, went or was written to
/// (inotify(7)). What happens without a word of the system, as on a network's file system or behind a link, is told
/// within a second. One thread at a time.
///
/// The watch begins at the first question after a second: its end costs some 15 ms, for which a command that asks once
/// or twice would wait.
class FolderWatch {
 public:
  explicit FolderWatch(std::filesystem::path folder, Clock::time_point from = Clock::now() + kLongestTrust);

  /// True when something may have changed since the call before; up to `from`, and the first time then, always.
  bool MayHaveChanged();

 private:
  static constexpr std::chrono::seconds kLongestTrust{1};

  bool HasNews();

  std::filesystem::path folder_;
  Clock::time_point from_;
  FileDescriptor events_;  // none: not watched yet, there is no such folder, or the system has no watch to give
  Clock::time_point lookAt_;
};

}  // namespace recorder
