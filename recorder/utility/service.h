#pragma once

#include <filesystem>

#include "recorder/utility/handle.h"

namespace recorder {

/// Says that the recorder service runs: every worker holds one while it serves. It ends with the process, however that
/// ends; a program that a worker starts does not inherit it. [any number at once]
class ServiceLock {
 public:
  /// Throws std::system_error that names the lock file.
  explicit ServiceLock(const std::filesystem::path& stateFolder);

 private:
  FileDescriptor file_;
};

/// True while anybody holds a ServiceLock on `stateFolder`. Only asks, so that askers do not see each other.
bool IsServiceRunning(const std::filesystem::path& stateFolder);

}  // namespace recorder
