#pragma once

#include <chrono>

namespace recorder {

/// What limits and deadlines are measured by: it never jumps.
using Clock = std::chrono::steady_clock;

}  // namespace recorder
