#pragma once

#include <filesystem>

#include "recorder/utility/child_process.h"
#include "recorder/utility/clock.h"

namespace recorder {

/// A copy of this process that tells the webhook (see WebhookSender), so that nothing else waits for it. It ends with
/// this object, and with this process however it ends. The process has one thread, and no open database while Replenish
/// runs.
class WebhookProcess {
 public:
  explicit WebhookProcess(std::filesystem::path stateFolder);

  /// Starts a new process if it has ended; call now and then.
  void Replenish();

 private:
  const std::filesystem::path stateFolder_;
  ChildProcess process_;
  Clock::time_point start_;
};

}  // namespace recorder
