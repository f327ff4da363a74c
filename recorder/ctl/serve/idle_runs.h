#pragma once

#include <filesystem>
#include <utility>

#include "recorder/utility/clock.h"

namespace recorder {

/// Runs of tests (see Runs) where recorder-watch is left out: what it does about them by time is done here. One thread.
class IdleRuns {
 public:
  explicit IdleRuns(std::filesystem::path stateFolder) : stateFolder_(std::move(stateFolder)) {}

  /// Each minute, and the first time: passwords that are too old are wiped, runs forgotten, and rows that were at hand
  /// when recorder-watch ended come to their result. A failure is logged.
  void Update();

 private:
  const std::filesystem::path stateFolder_;
  Clock::time_point next_;
};

}  // namespace recorder
