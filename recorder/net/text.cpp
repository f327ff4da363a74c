#include "recorder/net/text.h"

#include "recorder/utility/text.h"

namespace recorder {

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

bool EqualsIgnoreCase(std::string_view left, std::string_view right) { return LowerCase(left) == LowerCase(right); }

bool StartsWithIgnoreCase(std::string_view text, std::string_view prefix) {
  return EqualsIgnoreCase(text.substr(0, prefix.size()), prefix);
}

std::string PercentEncoded(std::string_view text, std::string_view signs) {
  constexpr std::string_view kHex = "0123456789ABCDEF";
  std::string encoded;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    const bool isAlphanumeric = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    if (isAlphanumeric || signs.find(c) != std::string_view::npos) {
      encoded += c;
    } else {
      encoded += {'%', kHex[byte >> 4], kHex[byte & 0x0F]};
    }
  }
  return encoded;
}

std::string_view TakeUntil(std::string_view& rest, char separator) {
  const std::size_t end = rest.find(separator);
  const std::string_view taken = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  return taken;
}

}  // namespace recorder
