#pragma once

#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>

namespace recorder::onvif {

/// The number `text`, rounded, since cameras write whole ones as "25.0" too. Nothing when it is none, or not within
/// `min` and `max`.
inline std::optional<int> WholeNumber(std::string_view text, int min, int max) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if (!(number >= min && number <= max)) return std::nullopt;  // not even a number can be sent
  return static_cast<int>(std::lround(number));
}

}  // namespace recorder::onvif
