#include "recorder/utility/watch_clock.h"

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>

#include "recorder/utility/text.h"

namespace recorder {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

constexpr int kFastest = 100'000;

struct Speed {
  int factor = 1;
  std::int64_t since = 0;  // seconds since 1970
};

Speed ReadSpeed() {
  const char* const value = std::getenv(kWatchClockVariable);  // NOLINT(concurrency-mt-unsafe): nobody sets variables
  if (value == nullptr) return {};
  const std::string_view text = value;
  const std::size_t at = text.find('@');
  const auto factor = ParseNumber<int>(text.substr(0, at));
  const auto since = ParseNumber<std::int64_t>(at == std::string_view::npos ? "" : text.substr(at + 1));
  if (factor && since && *factor >= 1 && *factor <= kFastest) return {*factor, *since};
  throw std::runtime_error(std::string(kWatchClockVariable) + ": \"" + value + "\" is no speed, such as 60@1764153000");
}

const Speed& TheSpeed() {
  static const Speed speed = ReadSpeed();
  return speed;
}

}  // namespace

milliseconds WatchClock::Now() {
  const auto now = std::chrono::duration_cast<microseconds>(Clock::now().time_since_epoch());
  return std::chrono::floor<milliseconds>(now * TheSpeed().factor);
}

std::int64_t WatchClock::Seconds() {
  const Speed& speed = TheSpeed();
  const auto since = std::chrono::seconds(speed.since);
  const auto now = std::chrono::duration_cast<milliseconds>(std::chrono::system_clock::now().time_since_epoch());
  return std::chrono::floor<std::chrono::seconds>(since + (now - since) * speed.factor).count();
}

Clock::time_point WatchClock::RealTime(milliseconds time) {
  if (time == milliseconds::max()) return Clock::time_point::max();
  return Clock::time_point(microseconds(time) / TheSpeed().factor);
}

}  // namespace recorder
