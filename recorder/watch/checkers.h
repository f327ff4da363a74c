#pragma once

#include <json/json.h>
#include <poll.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <string>
#include <vector>

#include "recorder/utility/clock.h"

namespace recorder {

/// One call of the module.
struct CheckJob {
  std::uint64_t id = 0;  ///< whatever the asker likes; the answer has it, too
  std::string method;
  Json::Value params{Json::objectValue};
};

/// What became of one.
struct CheckAnswer {
  enum class Kind {
    kAnswered,  ///< the module answered: `causes`
    kFailed,    ///< it did not, and the process goes on
    kDied,      ///< the process ended, or had to be ended. Whether the camera was asked, nobody knows
  };
  std::uint64_t id = 0;
  Kind kind = Kind::kFailed;
  std::string causes = {};  ///< the name of an Outcome; for a list one for each row, with ", " between; "": not known
  std::chrono::milliseconds time{0};
};

/// What a checker does with a job, in its own process. `id` and `time` of the answer are set by others.
using CheckWork = std::function<CheckAnswer(const CheckJob&)>;

struct CheckerLimits {
  std::size_t most = 40;          ///< processes
  std::chrono::seconds idle{30};  ///< after which one that has nothing to do ends
  std::chrono::milliseconds job;  ///< after which one that is still busy is ended
};

/// A pool of processes that each do one job at a time: copies of this one, made when there is a job for them. One that
/// dies or takes too long tells its job as such, and another one takes its place.
///
/// Owner:   holds the processes, which end with it, and with this process however it ends.
/// Thread:  the process has one, and no open database while Start runs, since a copy of that would be unsafe.
/// Time:    nothing waits for a checker but the destructor.
/// Secrets: wipes the text that it has sent; the job is the asker's.
class Checkers {
 public:
  Checkers(CheckWork work, CheckerLimits limits);
  ~Checkers();
  Checkers(const Checkers&) = delete;
  Checkers& operator=(const Checkers&) = delete;

  /// How many jobs can be started now.
  std::size_t Free() const;

  /// Hands a job to a process. False: there was no process to be had, which is logged, and nobody works for it.
  [[nodiscard]] bool Start(const CheckJob& job);

  /// What to wait for before the next Take, and until when at the latest.
  void AddTo(std::vector<pollfd>& waited) const;
  Clock::time_point TakeAt() const;

  /// The answers that have come since the last time.
  std::vector<CheckAnswer> Take();

 private:
  class Checker;

  void RemoveSpent();

  CheckWork work_;
  CheckerLimits limits_;
  std::list<Checker> checkers_;
};

}  // namespace recorder
