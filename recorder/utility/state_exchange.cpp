#include "recorder/utility/state_exchange.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "recorder/utility/clock.h"
#include "recorder/utility/day_text.h"
#include "recorder/utility/files.h"
#include "recorder/utility/log.h"
#include "recorder/utility/state_files.h"

namespace recorder {
namespace fs = std::filesystem;
namespace {

// One folder, whose name says how far an exchange has come. It holds what is new and what was there before.
constexpr char kBuilt[] = "exchange.built";      ///< not decided: the state folder is as it was
constexpr char kDecided[] = "exchange.decided";  ///< what is in the state folder is old
constexpr char kCleared[] = "exchange.cleared";  ///< what is in the state folder is new, or nothing
constexpr char kNew[] = "new";
constexpr char kOld[] = "old";

constexpr char kKept[] = "before-restore-";

/// All else in the state folder is somebody else's (such as "lost+found" of a file system), and stays. A database
/// has the files of its write-ahead log besides.
bool IsOwn(std::string_view name) {
  return name.starts_with(kRecordsFile) || name.starts_with(kRunsFile) ||
         std::find(std::begin(kStateFiles), std::end(kStateFiles), name) != std::end(kStateFiles);
}

std::vector<std::string> NamesIn(const fs::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename());
  return names;
}

/// One after another: whoever is interrupted goes on with the rest.
void MoveAll(const fs::path& from, const fs::path& to) {
  for (const std::string& name : NamesIn(from)) {
    if (IsOwn(name)) fs::rename(from / name, to / name);
  }
  SyncFolder(to);
  SyncFolder(from);
}

/// rename(2) moves no mount point, and no folder that is another user's.
bool CanMove(const fs::path& path) {
  struct statx found = {};
  if (statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_TYPE, &found) != 0) return false;
  const bool isMountPoint = (found.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
  return !isMountPoint && (!S_ISDIR(found.stx_mode) || access(path.c_str(), W_OK) == 0);
}

/// Throws when an exchange could not go to its end.
void CheckMoves(const fs::path& stateFolder) {
  for (const std::string& name : NamesIn(stateFolder)) {
    if (IsOwn(name) && !CanMove(stateFolder / name)) {
      throw std::runtime_error((stateFolder / name).string() + ": cannot be moved: it is mounted, or another user's");
    }
  }
}

/// False, with errno, when not all of it could be.
bool IsWiped(const FileDescriptor& file) {
  static constexpr std::array<char, 65'536> kNothing{};
  struct stat found = {};
  if (fstat(file.Get(), &found) != 0) return false;
  while (found.st_size > 0) {
    const auto size = static_cast<std::size_t>(std::min<std::int64_t>(kNothing.size(), found.st_size));
    const ssize_t written = write(file.Get(), kNothing.data(), size);
    if (written < 0 && errno != EINTR) return false;
    found.st_size -= std::max<ssize_t>(written, 0);
  }
  return fdatasync(file.Get()) == 0;
}

/// One that cannot be wiped is told of, and goes all the same.
void Wipe(const fs::path& path) {
  const FileDescriptor file{open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW)};
  if (!file || !IsWiped(file)) {
    LogFailure(path.string() + " was removed without being wiped: " + std::generic_category().message(errno));
  }
}

/// Passwords of runs end with them: nobody would open the file of a state that is only kept.
void RemoveRuns(const fs::path& folder) {
  for (const std::string& name : NamesIn(folder)) {
    if (!name.starts_with(kRunsFile)) continue;
    Wipe(folder / name);
    RemoveFile(folder / name);
  }
}

/// A name by the day that nothing has yet.
fs::path NameForOld(const fs::path& stateFolder) {
  const std::string name = stateFolder / (kKept + DayText(SecondsNow()));
  fs::path free = name;
  for (int number = 2; fs::exists(free); ++number) free = name + '-' + std::to_string(number);
  return free;
}

/// Returns where: "" when there was nothing.
fs::path KeepOld(const fs::path& stateFolder) {
  const fs::path old = stateFolder / kCleared / kOld;
  fs::path kept;
  if (fs::exists(old)) RemoveRuns(old);
  if (fs::exists(old) && !fs::is_empty(old)) {
    kept = NameForOld(stateFolder);
    Rename(old, kept);
  }
  fs::remove_all(stateFolder / kCleared);
  SyncFolder(stateFolder);
  return kept;
}

fs::path GoOn(const fs::path& stateFolder) {
  const fs::path decided = stateFolder / kDecided;
  const fs::path cleared = stateFolder / kCleared;
  if (fs::exists(decided)) {
    MoveAll(stateFolder, decided / kOld);
    Rename(decided, cleared);
  }
  if (fs::exists(cleared / kNew)) MoveAll(cleared / kNew, stateFolder);
  return KeepOld(stateFolder);
}

/// What was written to the folders below `folder`, whose files are on the disk already.
void SyncFolders(const fs::path& folder) {
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.is_directory()) SyncFolder(entry.path());
  }
  SyncFolder(folder);
}

}  // namespace

StateExchange::StateExchange(fs::path stateFolder) : stateFolder_(std::move(stateFolder)), pause_(stateFolder_) {
  GoOn(stateFolder_);
  const fs::path built = stateFolder_ / kBuilt;
  fs::remove_all(built);
  for (const char* part : {kNew, kOld}) MakePrivateFolder(built / part);
}

StateExchange::~StateExchange() {
  std::error_code ignored;
  fs::remove_all(stateFolder_ / kBuilt, ignored);
}

fs::path StateExchange::NewState() const { return stateFolder_ / kBuilt / kNew; }

fs::path StateExchange::Commit() const {
  CheckMoves(stateFolder_);
  SyncFolders(stateFolder_ / kBuilt);
  Rename(stateFolder_ / kBuilt, stateFolder_ / kDecided);
  return GoOn(stateFolder_);
}

void FinishStateExchange(const fs::path& stateFolder) {
  if (!fs::exists(stateFolder / kDecided) && !fs::exists(stateFolder / kCleared)) return;
  const ServicePause pause{stateFolder};
  GoOn(stateFolder);
}

}  // namespace recorder
