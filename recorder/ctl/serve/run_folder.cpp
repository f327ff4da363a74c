#include "recorder/ctl/serve/run_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

namespace recorder {

namespace {

namespace fs = std::filesystem;

constexpr char kName[] = "recorder-server-";
constexpr std::chrono::minutes kYoungest{1};  // the owner of a younger one may be about to lock it

/// Nothing when another server has the folder, or it is another user's.
FileDescriptor Lock(const fs::path& folder) {
  FileDescriptor lock(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  struct stat status {};
  const bool isOurs = lock && fstat(lock.Get(), &status) == 0 && status.st_uid == geteuid();
  return isOurs && flock(lock.Get(), LOCK_EX | LOCK_NB) == 0 ? std::move(lock) : FileDescriptor();
}

/// Removes the folders of servers that were killed.
void RemoveAbandoned() {
  const auto now = fs::file_time_type::clock::now();
  std::error_code error;
  std::error_code ignored;
  for (fs::directory_iterator entry(fs::temp_directory_path(), error), end; !error && entry != end;
       entry.increment(error)) {
    const bool isFolder = entry->path().filename().string().starts_with(kName);
    if (!isFolder || entry->last_write_time(ignored) > now - kYoungest) continue;
    if (const FileDescriptor lock = Lock(entry->path())) fs::remove_all(entry->path(), ignored);
  }
}

}  // namespace

RunFolder::RunFolder() {
  RemoveAbandoned();
  std::string name = (fs::temp_directory_path() / kName).string() + "XXXXXX";
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make a folder in " + name);
  folder_ = name;
  lock_ = Lock(folder_);
}

RunFolder::~RunFolder() {
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

}  // namespace recorder
