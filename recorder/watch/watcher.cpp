#include "recorder/watch/watcher.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "recorder/host/stored_call.h"
#include "recorder/records/refused_logins.h"
#include "recorder/utility/cause_table.h"
#include "recorder/utility/log.h"
#include "recorder/utility/watch_clock.h"

namespace recorder {
namespace {

/// How long a camera is left alone that somebody contacts. Most contacts are shorter.
constexpr std::chrono::seconds kPutOff{5};

/// The moment `seconds` since 1970. The clock of these may have jumped: nothing was in the future, or is older than a
/// day.
WatchTime WatchTimeOf(std::int64_t seconds) {
  constexpr std::int64_t kDay = 86'400;
  return WatchClock::Now() - std::chrono::seconds(std::clamp(WatchClock::Seconds() - seconds, std::int64_t{0}, kDay));
}

}  // namespace

Watcher::Watcher(std::filesystem::path stateFolder, const ModuleLibrary& module, std::chrono::seconds interval,
                 BusyHosts& busyHosts)
    : stateFolder_(std::move(stateFolder)),
      module_(module),
      news_(stateFolder_),
      schedule_(interval, busyHosts),
      file_(stateFolder_),
      turns_(stateFolder_),
      attempts_(Attempts::Read(stateFolder_)) {
  for (const auto& [id, attempt] : attempts_) missed_.insert(id);
}

void Watcher::Update() {
  constexpr int kRestPerWork = 20;  // of thousands of cameras, somebody's record or outcome changes all the time
  const auto start = Clock::now();
  if (start < lookAt_ || (!news_.AreThere() && !isBehind_)) return;
  if (Try([this] { TakeOver(); })) lookAt_ = Clock::now() + kRestPerWork * (Clock::now() - start);
}

/// Does what may fail, and says whether it did not.
bool Watcher::Try(const std::function<void()>& work) {
  try {
    work();
    return true;
  } catch (const std::runtime_error& error) {
    GiveUp(error);
    return false;
  }
}

void Watcher::GiveUp(const std::exception& error) {
  constexpr std::chrono::seconds kPauseAfterFailure{10};
  const auto now = Clock::now();
  if (std::exchange(isBehind_, true) && now < lookAt_) return;  // that is logged already
  LogFailure("what is known of cameras waits: " + std::string(error.what()));
  lookAt_ = now + kPauseAfterFailure;
}

void Watcher::TakeOver() {
  Records records(stateFolder_);
  outcomes_ = records.Outcomes();
  if (!missed_.empty()) NoteMissed(records);
  std::vector<CameraRecord> cameras = records.List();
  isBehind_ = false;  // all is read
  cameras_.clear();
  for (CameraRecord& camera : cameras) {
    if (camera.status != CAM_CONN_STATUS_DISABLED) cameras_.emplace(camera.id, std::move(camera));
  }
  std::vector<WatchedCamera> watched;
  watched.reserve(cameras_.size());
  for (const auto& [id, camera] : cameras_) watched.push_back(Watched(camera));
  schedule_.Update(watched, WatchClock::Now());
}

/// The process before may have ended between an answer and its outcome, or this one had to give up in between.
void Watcher::NoteMissed(Records& records) {
  for (const int id : missed_) {
    const Attempt& attempt = attempts_.at(id);
    if (!attempt.isAnswered || !attempt.result) continue;
    const auto outcome = outcomes_.find(id);
    const bool isKept = outcome != outcomes_.end() &&
                        (outcome->second.cause == *attempt.result || outcome->second.since >= attempt.answered);
    if (!isKept) records.NoteOutcome(id, {*attempt.result, attempt.answered, attempt.revision, attempt.lastSuccess});
  }
  missed_.clear();
  outcomes_ = records.Outcomes();
}

WatchedCamera Watcher::Watched(const CameraRecord& camera) const {
  WatchedCamera watched{.id = camera.id, .revision = camera.revision, .host = camera.host, .login = LoginOf(camera)};
  if (const auto outcome = outcomes_.find(camera.id); outcome != outcomes_.end()) {
    watched.cause = outcome->second.cause;
    watched.since = WatchTimeOf(outcome->second.since);
  }
  if (const auto attempt = attempts_.find(camera.id); attempt != attempts_.end()) {
    const bool isOfRevision = attempt->second.revision == camera.revision;
    watched.attempted = WatchTimeOf(attempt->second.at);
    watched.hasWorked = isOfRevision && attempt->second.lastSuccess != 0;
    watched.wasCutOff = isOfRevision && !attempt->second.isAnswered;
  }
  return watched;
}

bool Watcher::StartNext(Checkers& checkers) {
  const auto check = schedule_.Next(WatchClock::Now());
  if (!check) return false;
  if (!turns_.Take(cameras_.at(check->id))) {
    schedule_.PutOff(*check, WatchClock::Now() + kPutOff);
    return true;
  }
  atHand_.emplace(check->id, *check);
  const bool hasBegun = Start(*check, checkers);
  if (!hasBegun) {  // nothing was sent
    End({.id = static_cast<std::uint64_t>(check->id), .causes = std::string(NameOf(Outcome::kRecorderFailed))});
  }
  return hasBegun;
}

bool Watcher::Start(const DueCheck& check, Checkers& checkers) {
  const ApiCall call = StoredCall(module_, kTestMethod, cameras_.at(check.id));
  return Try([&] { Begin(check); }) &&
         checkers.Start({.id = static_cast<std::uint64_t>(check.id), .method = kTestMethod, .params = call.params});
}

/// Kept before the camera hears of it.
void Watcher::Begin(const DueCheck& check) {
  Attempt attempt = attempts_[check.id];
  if (attempt.revision != check.revision) attempt.lastSuccess = 0;  // what worked may have been something else
  attempt.revision = check.revision;
  attempt.at = WatchClock::Seconds();
  attempt.isAnswered = false;
  file_.Write(check.id, attempt);
  attempts_[check.id] = attempt;
}

Clock::time_point Watcher::NextAt() const { return WatchClock::RealTime(schedule_.NextAt()); }

void Watcher::TellFirstDue() {
  const WatchTime first = schedule_.FirstDue();
  const auto left = std::chrono::floor<std::chrono::seconds>(first - WatchClock::Now());
  Try([&] { file_.TellFirstDue(first == WatchTime::max() ? 0 : WatchClock::Seconds() + left.count()); });
}

void Watcher::End(const CheckAnswer& answer) {
  const auto atHand = atHand_.extract(static_cast<int>(answer.id));
  if (atHand.empty()) return;
  const std::optional<Outcome> cause = OutcomeNamed(answer.causes);
  const bool isOfUse = schedule_.End(atHand.mapped(), cause, WatchClock::Now());
  const bool isOfCamera = cause && cause != Outcome::kRecorderFailed && cause != Outcome::kDisabled;
  if (isOfUse && isOfCamera) Keep(atHand.mapped(), *cause, answer.time);
  turns_.GiveBack(atHand.mapped().id);  // who waits for it can know what the check came to
}

void Watcher::Keep(const DueCheck& check, Outcome cause, std::chrono::milliseconds time) {
  Attempt& attempt = attempts_[check.id];
  attempt.isAnswered = true;
  attempt.answered = WatchClock::Seconds();
  attempt.time = time;
  attempt.result = cause;
  if (cause == Outcome::kOk) attempt.lastSuccess = attempt.answered;
  Try([&] { file_.Write(check.id, attempt); });
  NoteOutcome(check, cause, attempt);
}

/// Most checks come to what the one before came to, and so do not open the records.
void Watcher::NoteOutcome(const DueCheck& check, Outcome cause, const Attempt& attempt) {
  const auto [outcome, isNew] = outcomes_.try_emplace(check.id);
  if (!isNew && outcome->second.cause == cause) return;
  outcome->second.cause = cause;
  missed_.insert(check.id);
  if (isBehind_) return;
  const CameraContact contact{cause, attempt.answered, check.revision, attempt.lastSuccess};
  if (Try([&] { Records(stateFolder_).NoteOutcome(check.id, contact); })) missed_.erase(check.id);
}

}  // namespace recorder
