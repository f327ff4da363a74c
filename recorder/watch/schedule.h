#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <queue>
#include <string>
#include <unordered_map>
#include <vector>

#include "recorder/records/refused_logins.h"
#include "recorder/utility/outcome.h"
#include "recorder/watch/busy_hosts.h"

namespace recorder {

/// A time since some moment that stays the same for all that one Schedule is told. What is `now` never jumps.
using WatchTime = std::chrono::milliseconds;

/// A stored camera that is to be watched, and what is known of its checks so far.
struct WatchedCamera {
  int id = 0;
  int revision = 0;
  std::string host;
  std::string login = {};                             ///< see LoginOf
  std::optional<Outcome> cause = std::nullopt;        ///< what the last contact with it came to
  WatchTime since{0};                                 ///< when contacts began to come to that
  std::optional<WatchTime> attempted = std::nullopt;  ///< when its last check began
  bool hasWorked = false;                             ///< whether a check of this revision came to kOk
  bool wasCutOff =
      false;  ///< whether the last check of this revision ended with its process, and what it met is unknown
};

/// A check that is due.
struct DueCheck {
  int id = 0;
  int revision = 0;
};

/// Which stored camera is checked when: each once an interval, all of them spread over it evenly, and never two of one
/// host at once. The pauses of a camera that is silent grow to an hour. Cameras lock users out: one that has
/// refused the login is left alone until its record is edited so that the login may work, and its outcome forgotten by
/// that; one that may have, for want of a clock, for an hour. Others of the same login wait for an hour, too, and no
/// longer than the outcome is known. Other edits neither end nor renew that. A check that ended with its process may
/// have met a refusal, as long as none of that revision has worked: it counts as one for an hour, or until an edit.
///
/// Thread:  one. Nothing waits: time comes in with each call, and never goes back.
/// Time:    Next and End take as long as a heap does; Update looks at all cameras.
class Schedule {
 public:
  /// `busyHosts` outlives it, and tells of contacts of others, too.
  Schedule(WatchTime interval, BusyHosts& busyHosts)
      : interval_(interval), busyHosts_(busyHosts), refused_(std::max(RefusedLogins::kLeastPause, interval)) {}

  /// These and no others are watched from now on. What they tell of earlier checks counts for new ones, but for a login
  /// that was refused: that, and its end, counts for all.
  void Update(const std::vector<WatchedCamera>& cameras, WatchTime now);

  /// A check that is due, which is at hand from then on until its End. Nothing when there is none.
  std::optional<DueCheck> Next(WatchTime now);

  /// When to ask for the next one, if no check ends before; max() when there is nothing to wait for.
  WatchTime NextAt() const;

  /// When the check was or is due that is due first, whatever it waits for; max() when there is none.
  WatchTime FirstDue() const;

  /// Says that a check was not made, and is due at that time, whenever its turn is. What is known of the camera stays.
  void PutOff(const DueCheck& check, WatchTime due);

  /// Says that a check has ended: with `cause`, or with its process, which tells nothing of the camera. False when the
  /// camera's record is no longer the one that was checked, so that the answer is of no use.
  bool End(const DueCheck& check, std::optional<Outcome> cause, WatchTime now);

 private:
  struct Watched {
    int revision = 0;
    std::string host;
    std::string login;
    WatchTime began{0};                           // of the last check
    WatchTime silentPause{0};                     // that follows if the next check finds the camera silent
    std::optional<Outcome> cause = std::nullopt;  // of the last contact
    bool hasWorked = false;                       // in this revision
    bool wasCutOff = false;                       // the last check, which may have met a refusal
    std::uint64_t place = 0;  // in the line; 0: it stands there no more, other places of it count for nothing
  };
  struct Place {
    WatchTime due;
    std::uint64_t number;
    int id;
    bool operator>(const Place& other) const { return due > other.due; }
  };

  void Revise(int id, Watched& camera, const WatchedCamera& record, WatchTime now);
  void Admit(int id, Watched& camera, const WatchedCamera& record, WatchTime now);
  static void Describe(Watched& camera, const WatchedCamera& record);
  WatchTime PauseAfter(Watched& camera, std::optional<Outcome> cause) const;
  void GiveBack(int id);
  void Enqueue(int id, Watched& camera, WatchTime notBefore);
  void EnqueueAt(int id, Watched& camera, WatchTime due);
  WatchTime TurnOf(int id, WatchTime notBefore) const;
  bool IsHeldBack(const Place& place, Watched& camera, WatchTime now);
  void EnqueueFreed();

  const WatchTime interval_;
  std::unordered_map<int, Watched> cameras_;
  BusyHosts& busyHosts_;
  std::unordered_map<std::string, std::vector<Place>> waiting_;  // until that host is busy no more
  RefusedLogins refused_;
  std::unordered_map<int, std::string> atHand_;  // cameras, and the hosts where they are checked
  std::priority_queue<Place, std::vector<Place>, std::greater<>> line_;
  std::uint64_t lastPlace_ = 0;
};

}  // namespace recorder
