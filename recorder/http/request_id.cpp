#include "recorder/http/request_id.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "recorder/utility/secrets.h"

namespace recorder {

namespace {

constexpr std::size_t kLongest = 64;
constexpr std::string_view kCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-";

bool IsGood(std::string_view id) {
  return !id.empty() && id.size() <= kLongest && id.find_first_not_of(kCharacters) == std::string_view::npos;
}

std::string NewId() {
  std::array<unsigned char, 8> random{};
  randombytes_buf(random.data(), random.size());
  return HexText(random);
}

}  // namespace

std::string RequestIdOf(const std::function<const char*(const char*)>& variable) {
  if (const char* given = variable(kRequestIdVariable)) return given;
  const char* wanted = variable("HTTP_X_REQUEST_ID");
  const bool isOfProxy = wanted != nullptr && variable(kProxyVariable) != nullptr;
  return isOfProxy && IsGood(wanted) ? wanted : NewId();
}

}  // namespace recorder
