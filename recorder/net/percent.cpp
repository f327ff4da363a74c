#include "recorder/net/percent.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace recorder {
namespace {

constexpr std::size_t kEncodedSize = 3;  // of one byte: the percent sign and two digits

/// The byte whose percent sign `text` begins with.
std::optional<char> ByteAtFront(std::string_view text) {
  if (text.size() < kEncodedSize) return std::nullopt;
  unsigned char byte = 0;
  const char* const end = text.data() + kEncodedSize;
  if (std::from_chars(text.data() + 1, end, byte, 16).ptr != end) return std::nullopt;
  return static_cast<char>(byte);
}

}  // namespace

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

bool IsPercentEncoded(std::string_view text) {
  for (std::size_t at = text.find('%'); at != std::string_view::npos; at = text.find('%', at + 1)) {
    if (!ByteAtFront(text.substr(at))) return false;
  }
  return true;
}

std::string PercentDecoded(std::string_view text) {
  std::string decoded;
  while (!text.empty()) {
    const auto byte = text.front() == '%' ? ByteAtFront(text) : std::nullopt;
    decoded += byte.value_or(text.front());
    text.remove_prefix(byte ? kEncodedSize : 1);
  }
  return decoded;
}

std::string FormDecoded(std::string_view text) {
  std::string spaced(text);
  std::replace(spaced.begin(), spaced.end(), '+', ' ');
  return PercentDecoded(spaced);
}

}  // namespace recorder
