#pragma once

#include <string>
#include <string_view>

namespace recorder {

// ASCII text as header lines hold it: no locale, any thread.

/// `text` without blanks, tabs and line ends at both ends.
std::string_view Trimmed(std::string_view text);

std::string LowerCase(std::string_view text);

bool EqualsIgnoreCase(std::string_view left, std::string_view right);

bool StartsWithIgnoreCase(std::string_view text, std::string_view prefix);

/// Takes the text up to `separator` off the front of `rest`, the separator too; all of it when there is none.
std::string_view TakeUntil(std::string_view& rest, char separator);

}  // namespace recorder
