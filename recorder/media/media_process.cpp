#include "recorder/media/media_process.h"

#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>
#include <ctime>
#include <string_view>
#include <utility>

#include "recorder/media/spawn_media.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/bytes.h"
#include "recorder/utility/config.h"
#include "recorder/utility/counts.h"
#include "recorder/utility/log.h"

namespace recorder {
namespace {

using Bytes = std::span<const std::uint8_t>;

/// What came in time is decoded, though the request's time may end meanwhile.
constexpr std::chrono::seconds kShortestAnswer{2};

constexpr std::size_t kMostUnsent = 16 * kKiB;

Clock::time_point AnswerDeadline() {
  return std::max(RequestScope::Current().Deadline(), Clock::now() + kShortestAnswer);
}

bool IsSound(const MediaAnswerHead& head) {
  return head.status < MediaStatus::kCount && head.notesSize <= kLargestNotes && head.packetsSize <= kLargestControl &&
         head.pictureSize <= kLargestUnit && (head.pictureSize > 0) == (head.status == MediaStatus::kPicture);
}

/// Whoever has taken the process over may choose them: they must look like nobody else's.
void LogNotes(std::string_view notes) {
  while (!notes.empty()) {
    const std::string_view line = notes.substr(0, notes.find('\n'));
    LogFailure("recorder-media says: " + std::string(line));
    notes.remove_prefix(std::min(line.size() + 1, notes.size()));
  }
}

std::string DescribeMissing(std::uint32_t parts) {
  constexpr std::pair<SandboxPart, std::string_view> kParts[] = {{kSandboxFilter, "a filter of system calls"},
                                                                 {kSandboxLandlock, "Landlock"},
                                                                 {kSandboxLimits, "limits of memory and time"}};
  std::string text;
  for (const auto& [part, name] : kParts) {
    if ((parts & part) != 0) text.append(text.empty() ? "" : ", ").append(name);
  }
  return text;
}

/// Once: it is the same for each.
void LogMissing(std::uint32_t parts) {
  [[maybe_unused]] static const bool isLogged = [parts] {
    LogFailure("recorder-media runs without " + DescribeMissing(parts) + ", which this system or this build lacks.");
    return true;
  }();
}

std::string DescribeEnd(int status) {
  if (WIFEXITED(status)) return "it has ended with status " + std::to_string(WEXITSTATUS(status));
  const int signal = WTERMSIG(status);
  return signal == SIGKILL ? "it was killed"
                           : "it has ended by signal " + std::to_string(signal) + " (" + sigdescr_np(signal) + ")";
}

}  // namespace

MediaProcess::MediaProcess() {
  MediaChild child = SpawnMedia();
  process_ = child.process;
  channel_ = MediaChannel(std::move(child.end));
  if (process_ < 0) failure_ = Outcome::kRecorderFailed;
}

MediaProcess::~MediaProcess() { End(); }

bool MediaProcess::IsReady() {
  const std::lock_guard lock(mutex_);
  return IsGreeted(AnswerDeadline());
}

bool MediaProcess::Tell(MediaRequest request, std::uint32_t number, Bytes bytes) {
  const std::lock_guard lock(mutex_);
  Append({request, number, static_cast<std::uint32_t>(bytes.size())}, bytes);
  return unsent_.size() < kMostUnsent ? process_ > 0 : Send({}, AnswerDeadline());
}

bool MediaProcess::Close() {
  const std::lock_guard lock(mutex_);
  Append({MediaRequest::kClose, 0, 0}, {});
  return Send({}, AnswerDeadline());
}

void MediaProcess::Dismiss() {
  const std::lock_guard lock(mutex_);
  channel_ = MediaChannel(FileDescriptor());
}

std::optional<MediaAnswer> MediaProcess::Ask(MediaRequest request, std::uint32_t number, Bytes bytes, Bytes more) {
  const std::lock_guard lock(mutex_);
  const Clock::time_point deadline = AnswerDeadline();
  if (!IsGreeted(deadline)) return std::nullopt;
  if (!channel_.IsQuiet()) Fail("has spoken out of turn, or has ended");
  const MediaRequestHead head{request, number, static_cast<std::uint32_t>(bytes.size() + more.size())};
  return Send({BytesOf(head), bytes, more}, deadline) ? ReadAnswer(deadline) : std::nullopt;
}

bool MediaProcess::IsFresh() const {
  if (process_ < 0 || (isGreeted_ && !channel_.IsQuiet())) return false;
  clockid_t clock{};
  timespec used{};
  const bool isKnown = clock_getcpuclockid(process_, &clock) == 0 && clock_gettime(clock, &used) == 0;
  return !isKnown || used.tv_sec < kMediaCpuSeconds / 2;
}

bool MediaProcess::IsGreeted(Clock::time_point deadline) {
  if (!std::exchange(isGreeted_, true) && process_ > 0) Greet(deadline);
  return process_ > 0;
}

void MediaProcess::Greet(Clock::time_point deadline) {
  const std::optional<MediaAnswer> greeting = ReadAnswer(deadline);
  const std::uint32_t missing = greeting ? greeting->first : 0;
  if (missing == 0) return;
  LogMissing(missing);
  if (!GetConfig().demandSandbox) return;
  failure_ = Outcome::kRecorderFailed;
  Fail("is not used, since \"demandSandbox\" of the configuration asks for what it lacks");
}

void MediaProcess::Append(const MediaRequestHead& head, Bytes bytes) {
  for (const Bytes part : {BytesOf(head), bytes}) unsent_.insert(unsent_.end(), part.begin(), part.end());
}

/// What is unsent, and `parts` behind it.
bool MediaProcess::Send(std::initializer_list<Bytes> parts, Clock::time_point deadline) {
  const std::vector<std::uint8_t> unsent = std::exchange(unsent_, {});
  if (process_ > 0 && !(channel_.Send({unsent}, deadline) && channel_.Send(parts, deadline)))
    Fail("takes nothing more");
  return process_ > 0;
}

std::optional<MediaAnswer> MediaProcess::ReadAnswer(Clock::time_point deadline) {
  MediaAnswerHead head{};
  MediaAnswer answer;
  const bool hasHead = channel_.Receive(WritableBytesOf(head), deadline);
  if (hasHead && !IsSound(head)) {
    Fail("gives an answer that makes no sense");
  } else if (!hasHead || !ReadRest(head, answer, deadline)) {
    Fail("gives no answer");
  } else if (answer.status == MediaStatus::kNoMemory) {
    Fail("would need more memory than it may have");
  }
  return process_ > 0 ? std::optional(std::move(answer)) : std::nullopt;
}

bool MediaProcess::ReadRest(const MediaAnswerHead& head, MediaAnswer& answer, Clock::time_point deadline) {
  std::string notes(head.notesSize, '\0');
  answer = {head.status, head.first, head.second, std::string(head.packetsSize, '\0'),
            std::string(head.pictureSize, '\0')};
  const bool isWhole = channel_.Receive(AsWritableBytes(notes), deadline) &&
                       channel_.Receive(AsWritableBytes(answer.packets), deadline) &&
                       channel_.Receive(AsWritableBytes(answer.picture), deadline);
  LogNotes(notes);
  return isWhole;
}

/// Ends the process: whatever else it has to say counts for nothing.
void MediaProcess::Fail(const std::string& what) {
  if (process_ < 0) return;
  const std::string name = "recorder-media " + std::to_string(process_);
  LogFailure(name + " " + what + "; " + DescribeEnd(End()) + ".");
  SharedCounts().AddEnd(Program::kMedia);
}

int MediaProcess::End() {
  if (process_ < 0) return 0;
  int status = 0;
  kill(process_, SIGKILL);
  waitpid(std::exchange(process_, -1), &status, 0);
  return status;
}

}  // namespace recorder
