#include "recorder/utility/files.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <system_error>

#include "platform/utility.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/log.h"

namespace recorder {
namespace fs = std::filesystem;
namespace {

[[noreturn]] void Throw(int error, const fs::path& path) {
  throw std::system_error(error, std::generic_category(), path.string());
}

FileDescriptor Open(const fs::path& path, int flags, mode_t mode = 0) {
  FileDescriptor file{open(path.c_str(), flags | O_CLOEXEC, mode)};
  if (!file) Throw(errno, path);
  return file;
}

std::int64_t Nanoseconds(const timespec& time) {
  constexpr std::int64_t kSecond = 1'000'000'000;
  return std::int64_t{time.tv_sec} * kSecond + time.tv_nsec;
}

/// Size of the regular file, in bytes. A pipe or device would block or never end.
std::size_t CheckedSize(const FileDescriptor& file, const fs::path& path) {
  struct stat status {};
  if (fstat(file.Get(), &status) != 0) Throw(errno, path);
  if (S_ISDIR(status.st_mode)) Throw(EISDIR, path);
  if (!S_ISREG(status.st_mode)) Throw(EINVAL, path);
  if (static_cast<unsigned long long>(status.st_size) > kLargestFile) Throw(EFBIG, path);
  return static_cast<std::size_t>(status.st_size);
}

/// Reads until `size` bytes are there or the file ends; the number of bytes read.
std::size_t ReadUpTo(const FileDescriptor& file, const fs::path& path, char* destination, std::size_t size) {
  std::size_t done = 0;
  while (done < size) {
    const ssize_t got = read(file.Get(), destination + done, size - done);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) Throw(errno, path);
    if (got == 0) break;
    done += static_cast<std::size_t>(got);
  }
  return done;
}

void WriteAll(const FileDescriptor& file, const fs::path& path, std::string_view content) {
  while (!content.empty()) {
    const ssize_t written = write(file.Get(), content.data(), content.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) Throw(errno, path);
    content.remove_prefix(static_cast<std::size_t>(written));
  }
}

void Sync(const FileDescriptor& file, const fs::path& path) {
  if (fsync(file.Get()) != 0) Throw(errno, path);
}

void SyncFolderOf(const fs::path& path) { SyncFolder(path.has_parent_path() ? path.parent_path() : fs::path(".")); }

/// A new file beside `path`, on the disk when the constructor returns, and gone with this object.
class SideFile {
 public:
  SideFile(const fs::path& path, std::string_view content, mode_t mode) : name_(path.string() + ".XXXXXX") {
    const FileDescriptor file{mkostemp(name_.data(), O_CLOEXEC)};
    if (!file) Throw(errno, path);
    try {
      if (fchmod(file.Get(), mode) != 0) Throw(errno, path);
      WriteAll(file, path, content);
      Sync(file, path);
    } catch (...) {
      unlink(name_.c_str());
      throw;
    }
  }
  ~SideFile() { unlink(name_.c_str()); }  // no longer there when it was renamed
  SideFile(const SideFile&) = delete;
  SideFile& operator=(const SideFile&) = delete;

  const char* Name() const { return name_.c_str(); }

 private:
  std::string name_;
};

/// Also root is told: files that root leaves in another user's folder are out of that user's reach.
std::string AnotherUser(uid_t id) {
  passwd user{};
  passwd* found = nullptr;
  std::array<char, 4096> texts{};  // that `user` points to
  getpwuid_r(id, &user, texts.data(), texts.size(), &found);
  const std::string name = found == nullptr ? '#' + std::to_string(id) : found->pw_name;
  return "user " + name + "; run this as that user (sudo -u " + name + " ...)";
}

}  // namespace

std::string ReadFile(const fs::path& path) {
  const FileDescriptor file = Open(path, O_RDONLY | O_NONBLOCK);
  std::string content(CheckedSize(file, path), '\0');
  content.resize(ReadUpTo(file, path, content.data(), content.size()));
  return content;
}

void ReplaceFile(const fs::path& path, std::string_view content, mode_t mode) {
  const SideFile side{path, content, mode};
  Rename(side.Name(), path);
}

void Rename(const fs::path& from, const fs::path& to) {
  if (rename(from.c_str(), to.c_str()) != 0) Throw(errno, to);
  SyncFolderOf(to);
  if (from.parent_path() != to.parent_path()) SyncFolderOf(from);
}

void SyncFolder(const fs::path& folder) { Sync(Open(folder, O_RDONLY | O_DIRECTORY), folder); }

void RemoveFile(const fs::path& path) {
  if (unlink(path.c_str()) != 0 && errno != ENOENT) Throw(errno, path);
  SyncFolderOf(path);
}

void CreateFileOnce(const fs::path& path, std::string_view content) {
  {
    const SideFile side{path, content, 0600};
    if (link(side.Name(), path.c_str()) != 0 && errno != EEXIST) Throw(errno, path);
  }
  SyncFolderOf(path);
}

FileStamp StampOf(const fs::path& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return {};
  return {status.st_dev, status.st_ino, status.st_size, Nanoseconds(status.st_mtim), Nanoseconds(status.st_ctim)};
}

void MakePrivateFolder(const fs::path& folder) {
  if (mkdir(folder.c_str(), 0700) == 0) return;
  if (errno == ENOENT && folder.has_parent_path() && folder.parent_path() != folder) {
    MakePrivateFolder(folder.parent_path());
    if (mkdir(folder.c_str(), 0700) == 0) return;
  }
  if (errno != EEXIST) Throw(errno, folder);
  struct stat status {};
  if (stat(folder.c_str(), &status) != 0) Throw(errno, folder);
  if (!S_ISDIR(status.st_mode)) Throw(ENOTDIR, folder);
  if (status.st_uid != geteuid()) Throw(EPERM, folder.string() + ": is the folder of " + AnotherUser(status.st_uid));
  if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) Throw(EPERM, folder.string() + ": others may write there");
}

FileDescriptor LockFolder(const fs::path& folder) {
  FileDescriptor lock = Open(folder, O_RDONLY | O_DIRECTORY);
  while (flock(lock.Get(), LOCK_EX) != 0) {
    if (errno != EINTR) Throw(errno, folder);
  }
  return lock;
}

}  // namespace recorder

int ReadContentFromFileToBuf(const char* path, bool required, unsigned char** buffer, int* size) {
  static_assert(recorder::kLargestFile <= INT_MAX, "the size is handed out as an int");
  try {
    const recorder::FileDescriptor file = recorder::Open(path, O_RDONLY | O_NONBLOCK);
    const std::size_t wanted = recorder::CheckedSize(file, path);
    recorder::MallocBytes bytes{
        static_cast<unsigned char*>(std::malloc(wanted + 1))};  // an empty file has a buffer too
    if (!bytes) return -1;
    *size = static_cast<int>(recorder::ReadUpTo(file, path, reinterpret_cast<char*>(bytes.get()), wanted));
    *buffer = bytes.release();
    return 0;
  } catch (const std::system_error& error) {
    if (required || error.code().value() != ENOENT) recorder::LogFailure(error.what());
    return -1;
  }
}
