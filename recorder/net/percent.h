#pragma once

#include <string>
#include <string_view>

// Percent-encoding (RFC 3986 section 2.1). Pure; any thread.

namespace recorder {

/// Signs that stay in a path, beside letters and digits: those that have a place in an address (RFC 3986 sections 2.2
/// and 2.3) but for '#', and the percent sign of what is encoded already.
inline constexpr std::string_view kAddressSigns = "-._~:/?[]@!$&'()*+,;=%";

/// Signs that stay in a value, so that it never changes the path around it (RFC 3986 section 2.3).
inline constexpr std::string_view kUnreservedSigns = "-._~";

/// `text` with all but letters, digits and `signs` percent-encoded.
std::string PercentEncoded(std::string_view text, std::string_view signs);

/// True when two hexadecimal digits follow each percent sign of `text`.
bool IsPercentEncoded(std::string_view text);

/// `text` decoded. A percent sign without two hexadecimal digits behind it stays as it is.
std::string PercentDecoded(std::string_view text);

/// The same of a form's key or value (application/x-www-form-urlencoded), where a plus sign is a blank.
std::string FormDecoded(std::string_view text);

}  // namespace recorder
