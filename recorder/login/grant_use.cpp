#include "recorder/login/grant_use.h"

#include <atomic>
#include <cstdint>
#include <exception>

#include "recorder/access/granting.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/log.h"

namespace recorder {

namespace {

constexpr std::int64_t kLoggedEach = 60;  // seconds

/// True once in that time.
bool IsToBeLogged() {
  static std::atomic<std::int64_t> nextTime = 0;
  const std::int64_t now = SecondsNow();
  std::int64_t next = nextTime;
  return now >= next && nextTime.compare_exchange_strong(next, now + kLoggedEach);
}

}  // namespace

void TryNoteUse(const std::filesystem::path& stateFolder, const std::string& id) try {
  NoteUse(stateFolder, id);
} catch (const std::exception& error) {
  if (IsToBeLogged()) LogFailure(error.what());
}

}  // namespace recorder
