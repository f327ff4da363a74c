#include "recorder/ctl/serve/idle_runs.h"

#include <stdexcept>
#include <string>

#include "recorder/records/runs.h"
#include "recorder/utility/log.h"
#include "recorder/utility/service.h"

namespace recorder {

void IdleRuns::Update() {
  if (Clock::now() < next_) return;
  next_ = Clock::now() + std::chrono::minutes(1);
  if (!Runs::AreThere(stateFolder_) || IsServiceRunning(stateFolder_, Service::kWatch)) return;
  try {
    Runs(stateFolder_).Recover();
  } catch (const std::runtime_error& error) {
    LogFailure("runs of tests are left as they are: " + std::string(error.what()));
  }
}

}  // namespace recorder
