#pragma once

#include <fcntl.h>
#include <sys/types.h>

#include <filesystem>

#include "recorder/request/request_scope.h"
#include "recorder/utility/handle.h"

namespace recorder {

/// Keeps a camera to one asker at a time, or to those who share it, in all threads and processes of this recorder,
/// until destruction. Thread: any.
class CameraLock {
 public:
  /// Waits until `deadline` for byte `camera` of the file at `path`, which holds the locks of all cameras. Where
  /// nothing can be locked nobody is kept from asking: a full disk must not keep cameras from being tested. `type`:
  /// F_WRLCK for one alone, F_RDLCK for those who share it.
  CameraLock(const std::filesystem::path& path, off_t camera, Clock::time_point deadline, short type = F_WRLCK);

  /// False when somebody else held the lock until the deadline.
  explicit operator bool() const { return isHeld_; }

 private:
  FileDescriptor file_;
  bool isHeld_ = true;
};

}  // namespace recorder
