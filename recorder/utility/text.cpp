#include "recorder/utility/text.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

namespace recorder {
namespace {

unsigned char ByteAt(std::string_view text, std::size_t i) {
  return static_cast<unsigned char>(i < text.size() ? text[i] : '\0');
}

/// Length in bytes of the control character at `i`, or 0 when there is none.
std::size_t ControlLength(std::string_view text, std::size_t i) {
  const unsigned char c = ByteAt(text, i);
  if (c < 0x20 || c == 0x7f) return 1;
  const unsigned char next = ByteAt(text, i + 1);
  return c == 0xc2 && next >= 0x80 && next < 0xa0 ? 2 : 0;
}

/// Length in bytes of the sign at `i` that turns the text behind it round or ends a line for whoever shows it, or 0.
std::size_t TurnLength(std::string_view text, std::size_t i) {
  if (ByteAt(text, i) != 0xe2) return 0;
  const unsigned char next = ByteAt(text, i + 1);
  const unsigned char last = ByteAt(text, i + 2);
  const bool isIn2028 = next == 0x80 && last >= 0xa8 && last <= 0xae;  // U+2028 to U+202E
  const bool isIn2066 = next == 0x81 && last >= 0xa6 && last <= 0xa9;  // U+2066 to U+2069
  return isIn2028 || isIn2066 ? 3 : 0;
}

void AppendEscaped(std::string& escaped, unsigned char c) {
  if (c == '\n') {
    escaped += "\\n";
    return;
  }
  std::array<char, 5> code{};
  std::snprintf(code.data(), code.size(), "\\x%02x", static_cast<unsigned>(c));
  escaped += code.data();
}

/// Length in bytes of the well-formed character at `i`, or 0.
std::size_t CharacterLength(std::string_view text, std::size_t i) {
  const unsigned char lead = ByteAt(text, i);
  if (lead < 0x80) return 1;
  const std::size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
  constexpr std::array<std::uint32_t, 5> kSmallest{0, 0, 0x80, 0x800, 0x10000};
  if (lead < 0xc2 || lead > 0xf4 || i + length > text.size()) return 0;
  std::uint32_t value = lead & (0xffU >> (length + 1));
  for (std::size_t k = 1; k < length; ++k) {
    const unsigned char c = ByteAt(text, i + k);
    if ((c & 0xc0U) != 0x80) return 0;
    value = value << 6U | (c & 0x3fU);
  }
  const bool isSurrogate = value >= 0xd800 && value < 0xe000;
  return value < kSmallest[length] || value > 0x10ffff || isSurrogate ? 0 : length;
}

}  // namespace

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return lower;
}

bool EqualsIgnoreCase(std::string_view left, std::string_view right) { return LowerCase(left) == LowerCase(right); }

bool StartsWithIgnoreCase(std::string_view text, std::string_view prefix) {
  return EqualsIgnoreCase(text.substr(0, prefix.size()), prefix);
}

bool HoldsWord(std::string_view text, std::string_view word) {
  for (std::size_t at = text.find(word); at != std::string_view::npos; at = text.find(word, at + 1)) {
    const std::size_t end = at + word.size();
    const bool beginsThere = at == 0 || !IsOfWord(text[at - 1]) || !IsOfWord(word.front());
    const bool endsThere = end == text.size() || !IsOfWord(text[end]) || !IsOfWord(word.back());
    if (beginsThere && endsThere) return true;
  }
  return false;
}

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

std::string_view TakeUntil(std::string_view& rest, char separator) {
  const std::size_t end = rest.find(separator);
  const std::string_view taken = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  return taken;
}

std::vector<std::string_view> Split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  while (true) {
    const std::size_t end = text.find(separator);
    parts.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return parts;
    text.remove_prefix(end + 1);
  }
}

std::size_t CountCharacters(std::string_view text) {
  return static_cast<std::size_t>(
      std::ranges::count_if(text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xc0U) != 0x80; }));
}

bool IsUtf8(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = CharacterLength(text, i);
    if (length == 0) return false;
    i += length;
  }
  return true;
}

std::string_view WithoutBrackets(std::string_view host) {
  const bool isBracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
  return isBracketed ? host.substr(1, host.size() - 2) : host;
}

std::string WithBrackets(std::string_view host) {
  const std::string bare(WithoutBrackets(host));
  return bare.find(':') == std::string::npos ? bare : '[' + bare + ']';
}

bool IsNumericAddress(std::string_view host) {
  const std::string_view bare = WithoutBrackets(host);
  const std::string address(bare.substr(0, bare.find('%')));  // without its zone
  std::array<unsigned char, sizeof(in6_addr)> bytes{};
  return inet_pton(AF_INET, address.c_str(), bytes.data()) == 1 ||
         inet_pton(AF_INET6, address.c_str(), bytes.data()) == 1;
}

std::string NormalizedHost(std::string_view host) {
  std::string normalized(WithoutBrackets(host));
  if (normalized.size() > 1 && normalized.back() == '.') normalized.pop_back();
  return LowerCase(normalized);
}

bool HoldsControls(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (ControlLength(text, i) != 0) return true;
  }
  return false;
}

std::string EscapeControls(std::string_view text) {
  std::string escaped;
  escaped.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::size_t control = std::max(ControlLength(text, i), TurnLength(text, i));
    if (control != 0) {
      for (std::size_t k = 0; k < control; ++k) AppendEscaped(escaped, ByteAt(text, i + k));
      i += control - 1;
    } else if (text[i] == '\\') {
      escaped += "\\\\";
    } else {
      escaped += text[i];
    }
  }
  return escaped;
}

}  // namespace recorder
