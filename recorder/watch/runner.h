#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "recorder/records/runs.h"
#include "recorder/utility/clock.h"
#include "recorder/watch/checkers.h"
#include "recorder/watch/known_refusals.h"
#include "recorder/watch/run_plan.h"

namespace recorder {

/// Tests the rows of runs (see Runs), one run after the other, by checkers that others use, too.
///
/// Thread:  one.
/// Failure: where the file cannot be used, that is logged, what is at hand is given up, and the file looked at again
///          after a minute: nobody else has to suffer. The process may end at any time: a row that was at hand then is
///          not tested again.
class Runner {
 public:
  /// Calls at once: a half of the checkers, so that there are always some for stored cameras.
  static constexpr std::size_t kMostCalls = 20;
  /// Calls that stored cameras leave to a run, however many of them are due.
  static constexpr std::size_t kLeastCalls = 5;
  /// Those of them that knock, which are short.
  static constexpr std::size_t kMostKnocking = 2;
  /// The ids of its jobs begin here.
  static constexpr std::uint64_t kFirstJob = std::uint64_t{1} << 32U;

  /// `busyHosts` outlives it.
  Runner(std::filesystem::path stateFolder, BusyHosts& busyHosts)
      : stateFolder_(std::move(stateFolder)), busyHosts_(busyHosts), refusals_(stateFolder_) {}

  /// Looks now and then whether there is a run to be tested. To open the file is to forget what is too old.
  void Update();

  /// Takes the answer to a job. False: it is somebody else's.
  bool End(const CheckAnswer& answer);

  /// How many of the checkers that are free now others leave to it.
  std::size_t CallsWanted() const;

  /// Keeps what was answered, and starts as many calls as may be. Most of its time it opens and closes the file, so
  /// that it does so once for all of them.
  void StartAll(Checkers& checkers);

 private:
  bool IsBusy() const;
  void LookForRun();
  std::size_t FreeCalls(const Checkers& checkers) const;
  void StartKnocks(Checkers& checkers);
  void StartRows(Checkers& checkers);
  void GiveUp(const std::exception& error);
  void Load(const Runs& runs, int run);
  void Take(const std::vector<RowOutcome>& outcomes);
  void Begin(std::size_t most, std::vector<std::vector<RunRow>>& calls);
  void TakeRefused(std::vector<RunRow>& rows);
  void Keep(Runs& runs);
  void Start(const std::vector<RunRow>& rows, Checkers& checkers);

  const std::filesystem::path stateFolder_;
  BusyHosts& busyHosts_;
  KnownRefusals refusals_;
  std::map<int, std::string> digests_;  // of the rows at hand, as `refusals_` knows them
  bool isRecovered_ = false;            // what was at hand before has its result
  std::optional<RunPlan> plan_;         // of `run_`
  int run_ = 0;
  bool isOver_ = false;  // nothing of the run begins any more
  std::map<std::uint64_t, std::vector<int>> atHand_;
  std::map<std::uint64_t, std::vector<int>> knocks_;  // the same, of hosts that are knocked at
  std::vector<RowOutcome> ended_;                     // and not kept yet
  std::uint64_t lastJob_ = kFirstJob;
  Clock::time_point lookAt_;
};

}  // namespace recorder
