#include "recorder/records/attempts.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>
#include <system_error>

#include "recorder/utility/files.h"
#include "recorder/utility/state_files.h"

namespace recorder {
namespace {

/// A camera's place is at its id times the size of this, which divides a page, so that nothing ends a process in the
/// middle of one. The place of id 0 tells what the file is, and when the first check is due.
struct Slot {
  std::int64_t at = 0;
  std::int64_t answered = 0;
  std::int64_t lastSuccess = 0;
  std::int64_t milliseconds = 0;
  std::int32_t revision = 0;
  std::int32_t result = 0;  // 1 more than the Outcome
  std::int32_t isAnswered = 0;
  std::int32_t unused[5] = {};
};
static_assert(sizeof(Slot) == 64);

constexpr std::string_view kKind = "watch.attempts 1, by camera id\n";
constexpr off_t kFirstDue = 32;
static_assert(kKind.size() <= kFirstDue && kFirstDue + sizeof(std::int64_t) <= sizeof(Slot));

std::filesystem::path FileIn(const std::filesystem::path& stateFolder) { return stateFolder / kAttemptsFile; }

Slot SlotOf(const Attempt& attempt) {
  return {.at = attempt.at,
          .answered = attempt.answered,
          .lastSuccess = attempt.lastSuccess,
          .milliseconds = attempt.time.count(),
          .revision = attempt.revision,
          .result = attempt.result ? static_cast<int>(*attempt.result) + 1 : 0,
          .isAnswered = attempt.isAnswered ? 1 : 0};
}

Attempt AttemptOf(const Slot& slot) {
  const bool isKnown = slot.result > 0 && slot.result <= static_cast<int>(Outcome::kCount);
  return {.revision = slot.revision,
          .at = slot.at,
          .isAnswered = slot.isAnswered != 0,
          .answered = slot.answered,
          .time = std::chrono::milliseconds(slot.milliseconds),
          .result = isKnown ? std::optional(static_cast<Outcome>(slot.result - 1)) : std::nullopt,
          .lastSuccess = slot.lastSuccess};
}

bool IsOfThisKind(std::string_view content) { return content.starts_with(kKind); }

}  // namespace

Attempts::Attempts(const std::filesystem::path& stateFolder) : path_(FileIn(stateFolder)) {
  if (!exists(path_) || !IsOfThisKind(ReadFile(path_))) ReplaceFile(path_, kKind);
  file_ = FileDescriptor(open(path_.c_str(), O_WRONLY | O_CLOEXEC));
  if (!file_) throw std::system_error(errno, std::generic_category(), path_.string());
  TellFirstDue(0);
}

void Attempts::Write(int cameraId, const Attempt& attempt) {
  const Slot slot = SlotOf(attempt);
  if (pwrite(file_.Get(), &slot, sizeof(slot), off_t{cameraId} * static_cast<off_t>(sizeof(slot))) != sizeof(slot)) {
    throw std::system_error(errno, std::generic_category(), path_.string());
  }
}

void Attempts::TellFirstDue(std::int64_t due) {
  if (pwrite(file_.Get(), &due, sizeof(due), kFirstDue) != sizeof(due)) {
    throw std::system_error(errno, std::generic_category(), path_.string());
  }
}

std::int64_t Attempts::FirstDue(const std::filesystem::path& stateFolder) {
  const FileDescriptor file(open(FileIn(stateFolder).c_str(), O_RDONLY | O_CLOEXEC));
  std::int64_t due = 0;
  return file && pread(file.Get(), &due, sizeof(due), kFirstDue) == sizeof(due) ? due : 0;
}

std::map<int, Attempt> Attempts::Read(const std::filesystem::path& stateFolder) {
  std::map<int, Attempt> attempts;
  if (!exists(FileIn(stateFolder))) return attempts;
  const std::string content = ReadFile(FileIn(stateFolder));
  if (!IsOfThisKind(content)) return attempts;
  for (std::size_t at = sizeof(Slot); at + sizeof(Slot) <= content.size(); at += sizeof(Slot)) {
    Slot slot;
    std::memcpy(&slot, content.data() + at, sizeof(slot));
    const int id = static_cast<int>(at / sizeof(Slot));
    if (slot.at != 0) attempts.emplace_hint(attempts.end(), id, AttemptOf(slot));
  }
  return attempts;
}

}  // namespace recorder
