#include "recorder/ctl/time_text.h"

#include <array>
#include <ctime>
#include <stdexcept>

namespace recorder {

std::string TimeText(std::int64_t seconds) {
  if (seconds == 0) return "-";
  const auto time = static_cast<std::time_t>(seconds);  // of 32 bits on some machines: until 2038
  std::tm parts{};
  gmtime_r(&time, &parts);
  std::array<char, 32> text{};
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M", &parts)};
}

std::int64_t EndOfDay(const std::string& date) {
  std::tm parts{};
  const char* const end = strptime(date.c_str(), "%Y-%m-%d", &parts);
  if (end == nullptr || *end != '\0') throw std::runtime_error("\"" + date + "\" is no day such as 2027-01-31");
  ++parts.tm_mday;  // timegm() makes the first of the next month of a 32nd
  return timegm(&parts);
}

}  // namespace recorder
