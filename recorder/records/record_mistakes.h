#pragma once

#include <optional>
#include <string>

namespace recorder {

/// What keeps `text`, which may be empty, from being stored; for users and without the text. Nothing when it may be.
std::optional<std::string> TextMistake(const std::string& text);

/// The same of a text that must not be empty.
std::optional<std::string> NameMistake(const std::string& text);

}  // namespace recorder
