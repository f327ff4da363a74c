#include "recorder/watch/schedule.h"

#include <algorithm>
#include <utility>

#include "recorder/utility/cause_table.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

constexpr WatchTime kHour = std::chrono::hours(1);

/// What may be so for long.
bool IsSilent(std::optional<Outcome> cause) {
  return !cause || cause == Outcome::kUnreachable || cause == Outcome::kTimedOut;
}

/// Whether a camera is not checked any more.
bool IsRefused(std::optional<Outcome> cause) { return cause == Outcome::kLoginRefused; }

}  // namespace

void Schedule::Update(const std::vector<WatchedCamera>& cameras, WatchTime now) {
  std::unordered_map<int, Watched> before = std::exchange(cameras_, {});
  for (const WatchedCamera& record : cameras) {
    auto known = before.extract(record.id);
    const bool isKnown = !known.empty();
    Watched& camera = isKnown ? cameras_.insert(std::move(known)).position->second : cameras_[record.id];
    if (isKnown) {
      Revise(record.id, camera, record, now);
    } else {
      Admit(record.id, camera, record, now);
    }
  }
  for (const WatchedCamera& record : cameras) {  // once all that is forgotten is
    if (MayBeRefusedLogin(record.cause)) refused_.Add(record.login, record.since);
  }
  refused_.ForgetSpent(now);
}

void Schedule::Describe(Watched& camera, const WatchedCamera& record) {
  camera.revision = record.revision;
  camera.host = NormalizedHost(record.host);
  camera.login = record.login;
}

void Schedule::Admit(int id, Watched& camera, const WatchedCamera& record, WatchTime now) {
  Describe(camera, record);
  camera.cause = record.cause;
  camera.began = record.attempted.value_or(now - interval_);
  camera.silentPause = interval_;
  camera.hasWorked = record.hasWorked;
  camera.wasCutOff = record.wasCutOff && !record.hasWorked;
  if (IsRefused(record.cause)) return;
  if (camera.wasCutOff) refused_.Add(camera.login, camera.began);
  if (!record.cause && !camera.wasCutOff) return Enqueue(id, camera, std::max(now, camera.began + interval_ / 2));
  if (record.cause && IsSilent(record.cause))
    camera.silentPause = std::max(interval_, std::min(camera.began - record.since, kHour));
  const WatchTime pause = PauseAfter(camera, record.cause);
  Enqueue(id, camera, std::max(now, camera.began + pause - interval_ / 2));
}

void Schedule::Revise(int id, Watched& camera, const WatchedCamera& record, WatchTime now) {
  const bool isEdited = camera.revision != record.revision;
  const std::optional<Outcome> before = std::exchange(camera.cause, record.cause);
  if (MayBeRefusedLogin(before) && !MayBeRefusedLogin(record.cause)) refused_.Forget(camera.login);
  if (isEdited && camera.wasCutOff) refused_.Forget(camera.login);
  if (!isEdited && IsRefused(before) == IsRefused(record.cause)) return;
  Describe(camera, record);
  camera.hasWorked = record.hasWorked;
  camera.wasCutOff = false;
  camera.silentPause = interval_;
  camera.place = 0;
  if (!IsRefused(record.cause)) Enqueue(id, camera, now);
}

std::optional<DueCheck> Schedule::Next(WatchTime now) {
  EnqueueFreed();
  while (!line_.empty() && line_.top().due <= now) {
    const Place place = line_.top();
    line_.pop();
    const auto found = cameras_.find(place.id);
    if (found == cameras_.end() || found->second.place != place.number) continue;
    Watched& camera = found->second;
    if (IsHeldBack(place, camera, now)) continue;
    camera.place = 0;
    camera.began = now;
    atHand_[place.id] = camera.host;
    busyHosts_.Take(camera.host);
    return DueCheck{place.id, camera.revision};
  }
  return std::nullopt;
}

/// A camera that is at hand waits for its own check, even if its host is another one now.
bool Schedule::IsHeldBack(const Place& place, Watched& camera, WatchTime now) {
  const auto atHand = atHand_.find(place.id);
  const std::string& host = atHand == atHand_.end() ? camera.host : atHand->second;
  if (busyHosts_.IsBusy(host)) {
    waiting_[host].push_back(place);
  } else if (refused_.Holds(camera.login, now)) {
    Enqueue(place.id, camera, now + WatchTime(1));  // an edit may end that before
  } else {
    return false;
  }
  return true;
}

WatchTime Schedule::NextAt() const { return line_.empty() ? WatchTime::max() : line_.top().due; }

WatchTime Schedule::FirstDue() const {
  WatchTime first = NextAt();
  for (const auto& [host, places] : waiting_) first = std::min(first, places.front().due);  // they came in that order
  return first;
}

void Schedule::GiveBack(int id) {
  if (const auto atHand = atHand_.extract(id)) busyHosts_.GiveBack(atHand.mapped());
}

void Schedule::PutOff(const DueCheck& check, WatchTime due) {
  GiveBack(check.id);
  const auto found = cameras_.find(check.id);
  const bool isCurrent = found != cameras_.end() && found->second.revision == check.revision;
  if (isCurrent) EnqueueAt(check.id, found->second, due);
}

bool Schedule::End(const DueCheck& check, std::optional<Outcome> cause, WatchTime now) {
  GiveBack(check.id);
  const auto found = cameras_.find(check.id);
  if (found == cameras_.end() || found->second.revision != check.revision) return false;
  Watched& camera = found->second;
  camera.hasWorked = camera.hasWorked || cause == Outcome::kOk;
  camera.wasCutOff = !cause && !camera.hasWorked;
  if (MayBeRefusedLogin(cause)) camera.cause = cause;
  if (MayBeRefusedLogin(cause) || camera.wasCutOff) refused_.Add(camera.login, now);
  if (!IsRefused(camera.cause)) {
    Enqueue(check.id, camera, std::max(now, camera.began + PauseAfter(camera, cause) - interval_ / 2));
  }
  return true;
}

void Schedule::EnqueueFreed() {
  std::erase_if(waiting_, [this](const auto& host) {
    if (busyHosts_.IsBusy(host.first)) return false;
    for (const Place& place : host.second) line_.push(place);
    return true;
  });
}

WatchTime Schedule::PauseAfter(Watched& camera, std::optional<Outcome> cause) const {
  if (MayBeRefusedLogin(cause) || camera.wasCutOff) return std::max(interval_, kHour);
  if (!IsSilent(cause)) return camera.silentPause = interval_;
  return std::exchange(camera.silentPause, std::max(interval_, std::min(2 * camera.silentPause, kHour)));
}

void Schedule::Enqueue(int id, Watched& camera, WatchTime notBefore) { EnqueueAt(id, camera, TurnOf(id, notBefore)); }

void Schedule::EnqueueAt(int id, Watched& camera, WatchTime due) {
  camera.place = ++lastPlace_;
  line_.push({due, camera.place, id});
}

/// The first of the camera's turns from `notBefore` on: they are an interval apart. The golden ratio puts those of
/// ids that follow each other far from each other.
WatchTime Schedule::TurnOf(int id, WatchTime notBefore) const {
  constexpr std::uint32_t kGoldenRatio = 0x9E3779B9;                          // its fraction, of 2^32
  const std::uint32_t share = static_cast<std::uint32_t>(id) * kGoldenRatio;  // of 2^32, too
  const auto length = static_cast<std::uint64_t>(interval_.count());
  const WatchTime phase{static_cast<WatchTime::rep>((std::uint64_t{share} * length) >> 32U)};
  if (notBefore <= phase) return phase;
  return phase + (notBefore - phase + interval_ - WatchTime(1)) / interval_ * interval_;
}

}  // namespace recorder
