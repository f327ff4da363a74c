#include "recorder/device/onvif/username_token.h"

#include <sodium.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <new>

#include "recorder/device/xml.h"

extern "C" {
#include <libavutil/base64.h>
#include <libavutil/hash.h>
}

namespace recorder::onvif {
namespace {

struct FreeHash {
  void operator()(AVHashContext* context) const noexcept { av_hash_freep(&context); }
};
using HashContext = std::unique_ptr<AVHashContext, FreeHash>;

using Nonce = std::array<unsigned char, 16>;

std::string Base64(const Nonce& nonce) {
  std::array<char, AV_BASE64_SIZE(sizeof(Nonce))> text{};
  return av_base64_encode(text.data(), static_cast<int>(text.size()), nonce.data(), static_cast<int>(nonce.size()));
}

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
  AVHashContext* raw = nullptr;
  if (av_hash_alloc(&raw, "SHA160") < 0) throw std::bad_alloc();
  const HashContext context(raw);
  av_hash_init(raw);
  for (const std::string_view part : {nonce, created, password}) {
    av_hash_update(raw, reinterpret_cast<const std::uint8_t*>(part.data()), part.size());
  }
  std::array<std::uint8_t, AV_BASE64_SIZE(AV_HASH_MAX_SIZE)> text{};
  av_hash_final_b64(raw, text.data(), static_cast<int>(text.size()));
  return reinterpret_cast<const char*>(text.data());
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
         Base64(nonce) +
         R"(</Nonce><Created xmlns="http://docs.oasis-open.org/wss/2004/01/)"
         R"(oasis-200401-wss-wssecurity-utility-1.0.xsd">)" +
         time + "</Created></UsernameToken></Security>";
}

}  // namespace recorder::onvif
