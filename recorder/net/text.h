#pragma once

#include <string>
#include <string_view>

namespace recorder {

// ASCII text as header lines hold it: no locale, any thread.

/// `text` without blanks, tabs and line ends at both ends.
std::string_view Trimmed(std::string_view text);

bool EqualsIgnoreCase(std::string_view left, std::string_view right);

bool StartsWithIgnoreCase(std::string_view text, std::string_view prefix);

/// Signs that stay in a path, beside letters and digits: those that have a place in an address (RFC 3986 sections 2.2
/// and 2.3) but for '#', and the percent sign of what is encoded already.
inline constexpr std::string_view kAddressSigns = "-._~:/?[]@!$&'()*+,;=%";

/// Signs that stay in a value, so that it never changes the path around it (RFC 3986 section 2.3).
inline constexpr std::string_view kUnreservedSigns = "-._~";

/// `text` with all but letters, digits and `signs` percent-encoded.
std::string PercentEncoded(std::string_view text, std::string_view signs);

/// Takes the text up to `separator` off the front of `rest`, the separator too; all of it when there is none.
std::string_view TakeUntil(std::string_view& rest, char separator);

}  // namespace recorder
