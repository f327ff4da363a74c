#pragma once

#include <filesystem>

#include "recorder/utility/child_process.h"
#include "recorder/utility/clock.h"

namespace recorder {

/// recorder-watch, which is started anew when it ends. It ends with this object, and with this process however it ends.
/// One thread.
class WatchProcess {
 public:
  explicit WatchProcess(std::filesystem::path program);

  /// Starts a new process if it has ended; call now and then, at best on SIGCHLD.
  void Replenish();

 private:
  void Start();

  const std::filesystem::path program_;
  ChildProcess process_;
  Clock::time_point start_;
};

}  // namespace recorder
