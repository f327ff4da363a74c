#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <string_view>

#include "recorder/utility/clock.h"

namespace recorder {

/// The parts of a contact with a camera, in their usual order.
enum class Rung {
  kNone,      ///< none of them
  kConnect,   ///< the name's lookup, and TCP
  kDescribe,  ///< asking what it has, behind TLS if there is one
  kLogin,     ///< the same again with the login
  kKeyFrame,  ///< from asking for the video to a whole picture
  kDecode,    ///< making the picture of that
  kCount      ///< none, but how many there are
};

/// The name by which the log has it, such as "keyFrame".
std::string_view NameOf(Rung rung);

/// How long each part of a request has taken, as a clock with laps. One thread.
class RungTimes {
 public:
  /// From now on time counts for `rung`.
  void Enter(Rung rung);

  /// What has counted for `rung` before the last Enter.
  std::chrono::microseconds Of(Rung rung) const;

 private:
  Rung rung_ = Rung::kNone;
  Clock::time_point entered_;
  std::array<Clock::duration, static_cast<std::size_t>(Rung::kCount)> times_{};
};

}  // namespace recorder
