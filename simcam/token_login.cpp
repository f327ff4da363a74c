#include "simcam/token_login.h"

#include <glib.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <memory>
#include <optional>

#include "simcam/glib_handle.h"

namespace simcam {
namespace {

constexpr const char* kDigestType =
    "http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-username-token-profile-1.0#PasswordDigest";
constexpr std::chrono::seconds kMostDifference(5);

struct FreeChecksum {
  void operator()(GChecksum* checksum) const noexcept { g_checksum_free(checksum); }
};

std::string Sha1InBase64(const std::string& bytes) {
  const std::unique_ptr<GChecksum, FreeChecksum> checksum(g_checksum_new(G_CHECKSUM_SHA1));
  g_checksum_update(checksum.get(), reinterpret_cast<const guchar*>(bytes.data()), static_cast<gssize>(bytes.size()));
  std::array<guint8, 20> digest{};
  gsize size = digest.size();
  g_checksum_get_digest(checksum.get(), digest.data(), &size);
  const GlibText text(g_base64_encode(digest.data(), size));
  return text.get();
}

/// Reads a time of UTC such as 2024-05-17T08:03:21Z, with or without parts of a second.
std::optional<std::chrono::sys_seconds> ReadTime(const std::string& text) {
  std::tm parts{};
  double seconds = 0;
  char zone = 0;
  char rest = 0;
  if (std::sscanf(text.c_str(), "%4d-%2d-%2dT%2d:%2d:%lf%c%c", &parts.tm_year, &parts.tm_mon,  // NOLINT(cert-err34-c)
                  &parts.tm_mday, &parts.tm_hour, &parts.tm_min, &seconds, &zone, &rest) != 7 ||
      zone != 'Z' || seconds < 0 || seconds >= 61) {
    return std::nullopt;
  }
  parts.tm_year -= 1900;
  parts.tm_mon -= 1;
  parts.tm_sec = static_cast<int>(seconds);
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
