#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <thread>

namespace recorder {

/// Where, and how often, the service manager wants to hear that this process is alive: sd_watchdog_enabled(3). Nothing
/// where it does not.
struct WatchdogWish {
  std::string socket;
  std::chrono::microseconds within;
};
std::optional<WatchdogWish> WantedWatchdog();

/// Says "WATCHDOG=1" (sd_notify(3)) three times in the time that the service manager waits, as long as `isAlive`, in a
/// thread of its own. Does nothing where nobody wants to hear it. Its end waits for a question under way, which is told
/// so by the token.
class Watchdog {
 public:
  explicit Watchdog(std::function<bool(const std::stop_token&)> isAlive);

 private:
  std::jthread thread_;
};

}  // namespace recorder
