#include "recorder/ctl/serve/watch_process.h"

#include <unistd.h>

#include <utility>

#include "recorder/utility/counts.h"
#include "recorder/utility/log.h"

namespace recorder {

namespace {

/// One that cannot start is not tried without a pause.
constexpr std::chrono::seconds kShortestLifeOfWatch{1};

}  // namespace

WatchProcess::WatchProcess(std::filesystem::path program) : program_(std::move(program)) { Start(); }

void WatchProcess::Replenish() {
  const bool wasThere = process_.Id() > 0;
  if (!process_.HasEnded()) return;
  if (wasThere) {
    LogFailure("The process that watches the cameras has ended; another one takes its place.");
    SharedCounts().AddEnd(Program::kWatch);
  }
  if (Clock::now() - start_ >= kShortestLifeOfWatch) Start();
}

void WatchProcess::Start() {
  start_ = Clock::now();
  process_ = ChildProcess([this] { execl(program_.c_str(), program_.c_str(), nullptr); });
}

}  // namespace recorder
