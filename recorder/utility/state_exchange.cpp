#include "recorder/utility/state_exchange.h"

#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "recorder/utility/clock.h"
#include "recorder/utility/day_text.h"
#include "recorder/utility/files.h"

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

/// What is no part of the state: the folder of an exchange, what others left, and the lock that is held meanwhile.
bool Stays(const std::string& name) {
  return name.starts_with("exchange.") || name.starts_with(kKept) || name == "service.lock";
}

std::vector<std::string> NamesIn(const fs::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename());
  return names;
}

/// One after another: whoever is interrupted goes on with the rest.
void MoveAll(const fs::path& from, const fs::path& to) {
  for (const std::string& name : NamesIn(from)) {
    if (!Stays(name)) fs::rename(from / name, to / name);
  }
  SyncFolder(to);
  SyncFolder(from);
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
