#pragma once

#include <cstdint>
#include <string>

namespace recorder {

/// "2026-11-25 23:52", in UTC; "-" for 0.
std::string TimeText(std::int64_t seconds);

/// The end of a day "2027-01-31", in UTC. Throws std::runtime_error when it is none.
std::int64_t EndOfDay(const std::string& date);

}  // namespace recorder
