#pragma once

#include <cstdint>
#include <string>

namespace recorder {

/// The day of a time in seconds since 1970, in UTC: "2026-01-31". Any thread.
std::string DayText(std::int64_t seconds);

}  // namespace recorder
