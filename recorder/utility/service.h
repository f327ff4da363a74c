#pragma once

#include <filesystem>

#include "recorder/utility/handle.h"

namespace recorder {

/// What is said to run.
enum class Service {
  kRecorder,  ///< every worker says so while it serves
  kWatch,     ///< whoever checks the stored cameras
};

/// Says that a service runs. It ends with the process, however that ends; a program that a worker starts does not
/// inherit it. [any number at once]
class ServiceLock {
 public:
  /// Throws std::system_error that names the lock file.
  explicit ServiceLock(const std::filesystem::path& stateFolder, Service service = Service::kRecorder);

 private:
  FileDescriptor file_;
};

/// Keeps the recorder service from running, until it is destroyed: nobody gets a ServiceLock meanwhile.
class ServicePause {
 public:
  /// Throws std::runtime_error when the service runs or another has it paused, std::system_error that names the file
  /// when the lock file cannot be made.
  explicit ServicePause(const std::filesystem::path& stateFolder);

 private:
  FileDescriptor file_;
};

/// True while anybody holds a ServiceLock or ServicePause on `stateFolder`. Only asks, so that askers do not see each
/// other.
bool IsServiceRunning(const std::filesystem::path& stateFolder, Service service = Service::kRecorder);

}  // namespace recorder
