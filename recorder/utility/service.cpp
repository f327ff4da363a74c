#include "recorder/utility/service.h"

#include <fcntl.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "platform/utility.h"
#include "recorder/utility/config.h"
#include "recorder/utility/file_lock.h"
#include "recorder/utility/files.h"
#include "recorder/utility/state_files.h"

namespace recorder {
namespace {

std::filesystem::path LockFile(const std::filesystem::path& stateFolder, Service service = Service::kRecorder) {
  return stateFolder / (service == Service::kWatch ? kWatchLock : kServiceLock);
}

/// Throws std::system_error, which names the file, when others have locks that exclude this one.
FileDescriptor LockWhole(const std::filesystem::path& path, short type) {
  MakePrivateFolder(path.parent_path());
  FileDescriptor file = OpenLocks(path);
  if (!file || !TryLock(file, type)) throw std::system_error(errno, std::generic_category(), path.string());
  return file;
}

}  // namespace

ServiceLock::ServiceLock(const std::filesystem::path& stateFolder, Service service)
    : file_(LockWhole(LockFile(stateFolder, service), F_RDLCK)) {}

ServicePause::ServicePause(const std::filesystem::path& stateFolder) try
    : file_(LockWhole(LockFile(stateFolder), F_WRLCK)) {
} catch (const std::system_error& error) {
  if (error.code() != std::errc::resource_unavailable_try_again && error.code() != std::errc::permission_denied) throw;
  throw std::runtime_error("the recorder runs on " + stateFolder.string() + ", or is being restored: stop it first");
}

bool IsServiceRunning(const std::filesystem::path& stateFolder, Service service) {
  const FileDescriptor file{open(LockFile(stateFolder, service).c_str(), O_RDONLY | O_CLOEXEC)};
  return file && IsLocked(file);
}

}  // namespace recorder

bool IsCmsHost() { return recorder::GetConfig().cmsHost; }

bool IsVTRunning() { return recorder::IsServiceRunning(recorder::GetConfig().stateFolder); }
