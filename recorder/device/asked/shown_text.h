#pragma once

#include <string>
#include <string_view>

namespace recorder {

/// `text`, which a stranger sent, as it may be shown: one line of UTF-8 that cannot steer a terminal, cut behind
/// kLongestFoundName bytes; "" when it cannot be made one.
std::string Shown(std::string_view text);

}  // namespace recorder
