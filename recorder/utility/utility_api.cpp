#include <sodium.h>

#include <chrono>
#include <cstddef>

#include "platform/utility.h"

std::string HttpBase64EncodeUnsigned(const unsigned char* bytes, int length) {
  if (bytes == nullptr || length <= 0) return {};
  const auto size = static_cast<std::size_t>(length);
  std::string text(sodium_base64_ENCODED_LEN(size, sodium_base64_VARIANT_ORIGINAL), '\0');
  sodium_bin2base64(text.data(), text.size(), bytes, size, sodium_base64_VARIANT_ORIGINAL);
  text.pop_back();  // the terminator is counted
  return text;
}

std::int64_t GetCurTimestamp() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}
