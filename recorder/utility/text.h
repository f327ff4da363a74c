#pragma once

#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace recorder {

// Text as header lines, lists and people hold it. Letters are those of ASCII, in no locale; any thread.

constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool IsLower(char c) { return c >= 'a' && c <= 'z'; }
constexpr bool IsUpper(char c) { return c >= 'A' && c <= 'Z'; }
constexpr bool IsOfWord(char c) { return IsDigit(c) || IsLower(c) || IsUpper(c); }

/// `text` with its letters in lower case.
std::string LowerCase(std::string_view text);

bool EqualsIgnoreCase(std::string_view left, std::string_view right);

bool StartsWithIgnoreCase(std::string_view text, std::string_view prefix);

/// True when `word` stands in `text`, and not within another word of letters and digits.
bool HoldsWord(std::string_view text, std::string_view word);

/// `text` without blanks, tabs and line ends at both ends.
std::string_view Trimmed(std::string_view text);

/// Takes the text up to `separator` off the front of `rest`, the separator too; all of it when there is none.
std::string_view TakeUntil(std::string_view& rest, char separator);

/// The parts of `text` between separators: one more than there are of these.
std::vector<std::string_view> Split(std::string_view text, char separator);

/// True when `text` is well-formed UTF-8 (RFC 3629): shortest form, no surrogates, at most U+10FFFF.
bool IsUtf8(std::string_view text);

/// How many characters `text` has, of UTF-8.
std::size_t CountCharacters(std::string_view text);

/// `host` without the brackets in which an address holds an IPv6 one (RFC 3986 section 3.2.2).
std::string_view WithoutBrackets(std::string_view host);

/// `host` as an address holds it: with brackets around an IPv6 one.
std::string WithBrackets(std::string_view host);

/// True for an IPv4 or IPv6 address, with or without brackets, false for a name.
bool IsNumericAddress(std::string_view host);

/// One text for one host: "CAM1.", "cam1" and "[FE80::1]", "fe80::1".
std::string NormalizedHost(std::string_view host);

/// True when `text` holds a control character: U+0000 to U+001F, U+007F to U+009F in UTF-8.
bool HoldsControls(std::string_view text);

/// `text` with control characters, backslashes, and signs that turn the direction of writing as \n, \x1b, \\ and the
/// like, so that it is one line, reads as it is and cannot steer a terminal.
std::string EscapeControls(std::string_view text);

/// The decimal number that `text` is from its first to its last sign, without a '+'; nothing when it is none, or one
/// that a Number cannot hold.
template <class Number>
std::optional<Number> ParseNumber(std::string_view text) {
  Number number{};
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

}  // namespace recorder
