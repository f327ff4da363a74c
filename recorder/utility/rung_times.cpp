#include "recorder/utility/rung_times.h"

#include <utility>

namespace recorder {

namespace {

constexpr std::size_t IndexOf(Rung rung) { return static_cast<std::size_t>(rung); }

constexpr std::string_view kNames[] = {"", "connect", "describe", "login", "keyFrame", "decode"};
static_assert(std::size(kNames) == IndexOf(Rung::kCount));

}  // namespace

std::string_view NameOf(Rung rung) { return kNames[IndexOf(rung)]; }

void RungTimes::Enter(Rung rung) {
  const Clock::time_point now = Clock::now();
  if (rung_ != Rung::kNone) times_[IndexOf(rung_)] += now - entered_;
  entered_ = now;
  rung_ = rung;
}

std::chrono::microseconds RungTimes::Of(Rung rung) const {
  return std::chrono::duration_cast<std::chrono::microseconds>(times_[IndexOf(rung)]);
}

}  // namespace recorder
