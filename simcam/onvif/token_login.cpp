#include "simcam/onvif/token_login.h"

#include <glib.h>
#include <openssl/sha.h>

#include <array>
#include <cstring>
#include <ctime>
#include <optional>
#include <string_view>

#include "simcam/glib_handle.h"

namespace simcam {
namespace {

constexpr const char* kDigestType =
    "http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-username-token-profile-1.0#PasswordDigest";
constexpr std::chrono::seconds kMostDifference(5);

std::string Sha1InBase64(const std::string& bytes) {
  std::array<unsigned char, SHA_DIGEST_LENGTH> digest{};
  SHA1(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), digest.data());
  return GlibText(g_base64_encode(digest.data(), digest.size())).get();
}

/// Reads a time of UTC such as 2024-05-17T08:03:21Z, with or without parts of a second.
std::optional<std::chrono::sys_seconds> ReadTime(const std::string& text) {
  std::tm parts{};
  const char* rest = strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S", &parts);
  if (rest == nullptr || std::string_view(rest + std::strspn(rest, ".0123456789")) != "Z") return std::nullopt;
  return std::chrono::sys_seconds(std::chrono::seconds(timegm(&parts)));
}

}  // namespace

std::chrono::sys_seconds CameraTime(const OnvifConfig& onvif) {
  return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()) +
         std::chrono::hours(onvif.clockHours);
}

bool TokenLogin::IsFresh(const UsernameToken& token) const {
  const auto created = ReadTime(token.created);
  return created && std::chrono::abs(*created - CameraTime(*camera_.onvif)) <= kMostDifference;
}

bool TokenLogin::Accept(const UsernameToken& token) {
  const std::string nonce = DecodeBase64(token.nonce);
  const std::scoped_lock lock(mutex_);
  const bool isNew = !nonce.empty() && nonces_.insert(nonce).second;
  return isNew && token.user == camera_.user && token.passwordType == kDigestType && IsFresh(token) &&
         token.password == Sha1InBase64(nonce + token.created + camera_.password);
}

}  // namespace simcam
