#pragma once

#include <cstdint>
#include <exception>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <unordered_map>

#include "recorder/host/module_library.h"
#include "recorder/records/attempts.h"
#include "recorder/records/contact_turns.h"
#include "recorder/records/records.h"
#include "recorder/watch/checkers.h"
#include "recorder/watch/records_news.h"
#include "recorder/watch/schedule.h"

namespace recorder {

/// Watches the stored cameras: lets checkers call "CameraTest" for each that is due, and keeps what that comes to. The
/// ids of its jobs are those of cameras, so that others of the same checkers have theirs from Runner::kFirstJob
/// on.
///
/// Thread:  one.
/// Failure: what cannot be kept is logged, the checks go on, and the records are looked at again after 10 s, and told
///          what they missed. Where watch.attempts cannot be written to, nothing is checked. The process may end at any
///          time: a check of which no answer is kept is not made again before the camera's turn.
class Watcher {
 public:
  Watcher(std::filesystem::path stateFolder, const ModuleLibrary& module, std::chrono::seconds interval,
          BusyHosts& busyHosts);

  /// Looks whether the records have changed, and takes them over, if that has not just taken long.
  void Update();

  /// Starts the check that is due, if there is one, or puts it off while somebody contacts the camera. False: there is
  /// none, or no process to be had.
  bool StartNext(Checkers& checkers);

  /// When StartNext may start one, if no check ends before.
  Clock::time_point NextAt() const;

  /// Tells others which check is due first (see Attempts::TellFirstDue). Call it now and then: if nobody does, the
  /// checks seem to be later and later.
  void TellFirstDue();

  /// Takes the answer to a job of this one's.
  void End(const CheckAnswer& answer);

 private:
  bool Try(const std::function<void()>& work);
  void GiveUp(const std::exception& error);
  void TakeOver();
  void NoteMissed(Records& records);
  WatchedCamera Watched(const CameraRecord& camera) const;
  bool Start(const DueCheck& check, Checkers& checkers);
  void Begin(const DueCheck& check);
  void Keep(const DueCheck& check, Outcome cause, std::chrono::milliseconds time);
  void NoteOutcome(const DueCheck& check, Outcome cause, const Attempt& attempt);

  const std::filesystem::path stateFolder_;
  const ModuleLibrary& module_;
  RecordsNews news_;
  bool isBehind_ = true;  // the records were not read yet, or something failed since
  Clock::time_point lookAt_;
  Schedule schedule_;
  Attempts file_;
  ContactTurns turns_;
  std::map<int, Attempt> attempts_;
  std::unordered_map<int, CameraRecord> cameras_;
  std::map<int, CameraOutcome> outcomes_;  // as the records have them
  std::set<int> missed_;                   // cameras whose last outcome they may lack
  std::unordered_map<int, DueCheck> atHand_;
};

}  // namespace recorder
