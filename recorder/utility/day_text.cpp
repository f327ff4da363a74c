#include "recorder/utility/day_text.h"

#include <array>
#include <ctime>

namespace recorder {

std::string DayText(std::int64_t seconds) {
  const auto time = static_cast<std::time_t>(seconds);  // of 32 bits on some machines: until 2038
  std::tm parts{};
  gmtime_r(&time, &parts);
  std::array<char, 32> text{};
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d", &parts)};
}

}  // namespace recorder
