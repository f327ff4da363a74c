#pragma once

#include <optional>
#include <string>

namespace recorder {

/// What keeps `text` from being stored, for users and without the text; nothing when it may be.
std::optional<std::string> TextMistake(const std::string& text, bool mayBeEmpty);

}  // namespace recorder
