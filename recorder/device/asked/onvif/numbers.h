#pragma once

#include <cmath>
#include <optional>
#include <string_view>

#include "recorder/utility/text.h"

namespace recorder::onvif {

/// The number `text`, rounded, since cameras write whole ones as "25.0" too. Nothing when it is none, or not within
/// `min` and `max`.
inline std::optional<int> WholeNumber(std::string_view text, int min, int max) {
  const auto number = ParseNumber<double>(text);
  if (!number || !(*number >= min && *number <= max)) return std::nullopt;  // not even a number can be sent
  return static_cast<int>(std::lround(*number));
}

}  // namespace recorder::onvif
