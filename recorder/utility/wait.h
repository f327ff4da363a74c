#pragma once

#include <poll.h>

#include <span>

#include "recorder/utility/clock.h"

namespace recorder {

/// Waits until one of the descriptors is ready for its events, which `revents` then tells. False when the deadline
/// passes first; true also when poll() fails: the call that follows reports what is wrong.
[[nodiscard]] bool WaitForAny(std::span<pollfd> entries, Clock::time_point deadline);

/// The same for one.
[[nodiscard]] bool WaitFor(int descriptor, short events, Clock::time_point deadline);

}  // namespace recorder
