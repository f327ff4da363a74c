#include "recorder/records/attempts.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <span>
#include <string_view>
#include <system_error>
#include <utility>

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

off_t PlaceOf(int cameraId) { return off_t{cameraId} * static_cast<off_t>(sizeof(Slot)); }

[[noreturn]] void Throw(const std::filesystem::path& path) {
  throw std::system_error(errno, std::generic_category(), path.string());
}

/// The file of a state folder as it is read, by parts, since it may be large. One that is missing or of another kind is
/// as one that is empty.
class AttemptsReader {
 public:
  explicit AttemptsReader(std::filesystem::path path)
      : path_(std::move(path)), file_(open(path_.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (!file_ && errno != ENOENT) Throw(path_);
    std::array<char, kKind.size()> kind{};
    if (Read(kind, 0) != kind.size() || std::string_view(kind.data(), kind.size()) != kKind) file_ = FileDescriptor();
  }

  bool IsOfThisKind() const { return static_cast<bool>(file_); }

  /// Reads what there is from the place `at` on, until `into` is full, and returns how many elements that are.
  template <class Element, std::size_t Size>
  std::size_t Read(std::array<Element, Size>& into, off_t at) const {
    if (!file_) return 0;
    const ssize_t size = pread(file_.Get(), into.data(), sizeof(into), at);
    if (size < 0) Throw(path_);
    return static_cast<std::size_t>(size) / sizeof(Element);
  }

 private:
  std::filesystem::path path_;
  FileDescriptor file_;
};

}  // namespace

Attempts::Attempts(const std::filesystem::path& stateFolder) : path_(FileIn(stateFolder)) {
  if (!AttemptsReader(path_).IsOfThisKind()) ReplaceFile(path_, kKind);
  file_ = FileDescriptor(open(path_.c_str(), O_WRONLY | O_CLOEXEC));
  if (!file_) Throw(path_);
  TellFirstDue(0);
}

void Attempts::Write(int cameraId, const Attempt& attempt) {
  const Slot slot = SlotOf(attempt);
  if (pwrite(file_.Get(), &slot, sizeof(slot), PlaceOf(cameraId)) != sizeof(slot)) Throw(path_);
}

void Attempts::TellFirstDue(std::int64_t due) {
  if (pwrite(file_.Get(), &due, sizeof(due), kFirstDue) != sizeof(due)) Throw(path_);
}

std::int64_t Attempts::FirstDue(const std::filesystem::path& stateFolder) {
  const FileDescriptor file(open(FileIn(stateFolder).c_str(), O_RDONLY | O_CLOEXEC));
  std::int64_t due = 0;
  return file && pread(file.Get(), &due, sizeof(due), kFirstDue) == sizeof(due) ? due : 0;
}

std::map<int, Attempt> Attempts::Read(const std::filesystem::path& stateFolder) {
  const AttemptsReader reader(FileIn(stateFolder));
  std::map<int, Attempt> attempts;
  std::array<Slot, 1024> slots;
  int id = 1;
  while (const std::size_t count = reader.Read(slots, PlaceOf(id))) {
    for (const Slot& slot : std::span(slots).first(count)) {
      if (slot.at != 0) attempts.emplace_hint(attempts.end(), id, AttemptOf(slot));
      ++id;
    }
  }
  return attempts;
}

std::optional<Attempt> Attempts::Of(const std::filesystem::path& stateFolder, int cameraId) {
  std::array<Slot, 1> slot;
  const bool isThere = AttemptsReader(FileIn(stateFolder)).Read(slot, PlaceOf(cameraId)) != 0 && slot[0].at != 0;
  return isThere ? std::optional(AttemptOf(slot[0])) : std::nullopt;
}

}  // namespace recorder
