// recorder-watch: checks the stored cameras one after the other, so that the records tell which are down, why, and
// since when, and beside that the rows of runs. One process decides and keeps; copies of it ask the cameras.

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string>
#include <vector>

#include "recorder/host/host.h"
#include "recorder/utility/address_policy.h"
#include "recorder/utility/log.h"
#include "recorder/utility/process_options.h"
#include "recorder/utility/service.h"
#include "recorder/utility/text.h"
#include "recorder/watch/checkers.h"
#include "recorder/watch/knock_work.h"
#include "recorder/watch/module_work.h"
#include "recorder/watch/runner.h"
#include "recorder/watch/watcher.h"
#include "recorder/watch/webhook_process.h"

namespace recorder {

namespace {

/// A call of the module should end within its own limit.
constexpr std::chrono::seconds kPatience{15};
/// Changes of the records are heeded after this time.
constexpr std::chrono::seconds kLookAgain{1};

/// Waits until there is something to do.
void Wait(const Checkers& checkers, const Watcher& watcher) {
  auto until = std::min(Clock::now() + kLookAgain, checkers.TakeAt());
  if (checkers.Free() > 0) until = std::min(until, watcher.NextAt());
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now());
  std::vector<pollfd> waited;
  checkers.AddTo(waited);
  poll(waited.data(), waited.size(), static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
}

/// A webhook or the row of a run must not send the recorder to itself.
void LearnOwnPort() {
  const char* port = std::getenv(kOwnPortVariable);  // NOLINT(concurrency-mt-unsafe): nobody sets variables
  if (port != nullptr) SetOwnPort(ParseNumber<int>(port).value_or(0));
}

[[noreturn]] void Watch(const Host& host) {
  WebhookProcess webhook(host.config.stateFolder);
  BusyHosts busyHosts;
  Watcher watcher(host.config.stateFolder, host.module, host.config.watchInterval, busyHosts);
  Runner runner(host.config.stateFolder, busyHosts);
  Checkers checkers(KnockOr(ModuleWork(host.module)), {.job = host.config.limits.test + kPatience});
  while (true) {
    for (const CheckAnswer& answer : checkers.Take()) {
      if (!runner.End(answer)) watcher.End(answer);
    }
    watcher.Update();
    runner.Update();
    webhook.Replenish();
    while (checkers.Free() > runner.CallsWanted() && watcher.StartNext(checkers)) continue;
    runner.StartAll(checkers);
    watcher.TellFirstDue();
    Wait(checkers, watcher);
  }
}

}  // namespace

}  // namespace recorder

int main(int argc, char** argv) {
  using namespace recorder;
  std::string configFile;
  const ProcessText text{"recorder-watch", "Checks the stored cameras, as a process of recorderctl serve."};
  const ProcessOption config{"--config", configFile,
                             "configuration file (default: $RECORDER_CONFIG, or else /etc/cameracap/recorder.json)"};
  if (const std::optional<int> status = ReadOptions(text, {config}, argc, argv)) return *status;
  try {
    const Host host = StartHost(FindConfigFile(configFile));
    LearnOwnPort();
    const ServiceLock lock(host.config.stateFolder);
    const ServiceLock watchLock(host.config.stateFolder, Service::kWatch);
    Watch(host);
  } catch (const std::exception& error) {
    LogFailure(error.what());
    return 1;
  }
}
