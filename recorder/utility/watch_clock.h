#pragma once

#include <chrono>
#include <cstdint>

#include "recorder/utility/clock.h"

namespace recorder {

/// Names in the environment how fast the time of the watch goes, so that a test sees hours of it in minutes: with
/// "60@1764153000" an hour passes in a minute, from that moment on, in seconds since 1970. All processes of a recorder
/// are told the same.
inline constexpr char kWatchClockVariable[] = "RECORDER_WATCH_CLOCK";

/// The time by which stored cameras are watched: when one is due, how long it is left alone, when its outcome changed
/// and what counts as a day of changes. It is the real time, unless kWatchClockVariable says otherwise; contacts and
/// their limits keep real time in any case. Any thread. Throws std::runtime_error where the variable makes no sense.
class WatchClock {
 public:
  /// Since some moment that stays the same while the machine runs; it never jumps.
  static std::chrono::milliseconds Now();
  /// Since 1970-01-01 00:00 UTC, for what outlives this process.
  static std::int64_t Seconds();
  /// When it is `time` of Now(), for whoever waits.
  static Clock::time_point RealTime(std::chrono::milliseconds time);
};

}  // namespace recorder
