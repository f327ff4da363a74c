#pragma once

#include <filesystem>

#include "recorder/utility/handle.h"
#include "recorder/utility/request_scope.h"

namespace recorder {

/// Keeps a camera to one asker at a time, in all threads and processes of this recorder, until destruction. Thread:
/// any.
class CameraLock {
 public:
  /// Waits until `deadline` for the lock, which is a file at `path` (flock(2)). Without a folder for that file nobody
  /// is kept from asking: a full disk must not keep cameras from being tested.
  CameraLock(const std::filesystem::path& path, Clock::time_point deadline);

  /// False when somebody else held the lock until the deadline.
  explicit operator bool() const { return isHeld_; }

 private:
  FileDescriptor file_;
  bool isHeld_ = true;
};

}  // namespace recorder
