#pragma once

#include <chrono>
#include <cstdint>
#include <ctime>

namespace recorder {

/// What limits and deadlines are measured by: it never jumps.
using Clock = std::chrono::steady_clock;

/// Seconds since 1970-01-01 00:00 UTC, for what outlives this process.
inline std::int64_t SecondsNow() { return std::time(nullptr); }

}  // namespace recorder
