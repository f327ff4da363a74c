#include "recorder/net/source_path.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "recorder/net/camera_url.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

/// What follows "scheme://"; nothing for a path, whose query may well hold such an address.
std::optional<std::string_view> BehindScheme(std::string_view path) {
  constexpr std::string_view kEnd = "://";
  const std::size_t end = path.find(kEnd);
  const bool isWhole =
      end != std::string_view::npos && end > 0 && path.substr(0, end).find_first_of("/?#") == std::string_view::npos;
  return isWhole ? std::optional(path.substr(end + kEnd.size())) : std::nullopt;
}

/// HTTP over TLS is spoken at one port.
bool IsSpoken(const CameraUrl& url) {
  return url.scheme == "rtsp" || url.scheme == "http" || (url.scheme == "https" && url.port == kHttpsPort);
}

}  // namespace

Outcome TakeApart(std::string& path, CameraAddress& address) {
  if (!BehindScheme(Trimmed(path))) return Outcome::kOk;
  const auto url = ParseCameraUrl(path);
  if (!url || url->host != NormalizedHost(address.host)) return Outcome::kForeignPath;
  if (url->scheme == "rtsps") return Outcome::kTlsStream;
  if (!IsSpoken(*url)) return Outcome::kForeignPath;
  if (url->namesPort || url->scheme == "https") address.port = url->port;
  path = url->path;
  return Outcome::kOk;
}

bool HoldsLogin(const std::string& path) {
  const auto rest = BehindScheme(Trimmed(path));
  return rest && rest->substr(0, rest->find_first_of("/?#")).find('@') != std::string_view::npos;
}

}  // namespace recorder
