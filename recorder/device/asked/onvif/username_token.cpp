#include "recorder/device/asked/onvif/username_token.h"

#include <sodium.h>

#include <array>
#include <cstdio>

#include "platform/utility.h"
#include "recorder/device/asked/xml.h"
#include "recorder/net/login/hash.h"

namespace recorder::onvif {
namespace {

using Nonce = std::array<unsigned char, 16>;

/// As xsd:dateTime in UTC, without fractions, which some cameras do not understand.
std::string TimeText(std::chrono::sys_seconds time) {
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(time - day);
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  return text.data();
}

}  // namespace

std::string PasswordDigest(std::string_view nonce, std::string_view created, std::string_view password) {
  return Base64Hash("SHA1", {nonce, created, password});
}

std::string UsernameToken(const std::string& user, const std::string& password, std::chrono::sys_seconds created) {
  Nonce nonce{};
  randombytes_buf(nonce.data(), nonce.size());
  const std::string time = TimeText(created);
  const std::string digest =
      PasswordDigest({reinterpret_cast<const char*>(nonce.data()), nonce.size()}, time, password);
  return R"(<Security s:mustUnderstand="1" xmlns="http://docs.oasis-open.org/wss/2004/01/)"
         R"(oasis-200401-wss-wssecurity-secext-1.0.xsd"><UsernameToken><Username>)" +
         XmlEscaped(user) +
         R"(</Username><Password Type="http://docs.oasis-open.org/wss/2004/01/)"
         R"(oasis-200401-wss-username-token-profile-1.0#PasswordDigest">)" +
         digest +
         R"(</Password><Nonce EncodingType="http://docs.oasis-open.org/wss/2004/01/)"
         R"(oasis-200401-wss-soap-message-security-1.0#Base64Binary">)" +
         HttpBase64EncodeUnsigned(nonce.data(), static_cast<int>(nonce.size())) +
         R"(</Nonce><Created xmlns="http://docs.oasis-open.org/wss/2004/01/)"
         R"(oasis-200401-wss-wssecurity-utility-1.0.xsd">)" +
         time + "</Created></UsernameToken></Security>";
}

}  // namespace recorder::onvif
