#include "recorder/utility/file_lock.h"

#include <fcntl.h>

#include <cerrno>
#include <functional>

namespace recorder {
namespace {

struct flock LockOf(short type, off_t start, off_t length) {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = start;
  lock.l_len = length;
  return lock;
}

}  // namespace

FileDescriptor OpenLocks(const std::filesystem::path& path) {
  return FileDescriptor{open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)};
}

off_t LockByteOf(const std::string& text) { return static_cast<off_t>(std::hash<std::string>()(text) & 0x7fffffffU); }

bool TryLock(const FileDescriptor& file, short type, off_t start, off_t length) {
  auto lock = LockOf(type, start, length);
  return fcntl(file.Get(), F_OFD_SETLK, &lock) == 0;
}

bool IsHeldByAnother() { return errno == EAGAIN || errno == EACCES; }

bool IsLocked(const FileDescriptor& file) {
  auto lock = LockOf(F_WRLCK, 0, 0);
  return fcntl(file.Get(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

}  // namespace recorder
