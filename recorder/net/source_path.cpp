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

/// Without the zone of a link-local address, which is our own affair.
std::string_view WithoutZone(std::string_view host) {
  const std::string_view bare = WithoutBrackets(host);
  return bare.substr(0, bare.find('%'));
}

}  // namespace

Outcome TakeApart(std::string& path, CameraAddress& address) {
  if (!BehindScheme(Trimmed(path))) return Outcome::kOk;
  const auto url = ParseCameraUrl(path);
  if (!url || WithoutZone(url->host) != NormalizedHost(WithoutZone(address.host))) return Outcome::kForeignPath;
  const bool isTls = url->scheme == "rtsps" || url->scheme == "https";
  if (!isTls && url->scheme != "rtsp" && url->scheme != "http") return Outcome::kForeignPath;
  if (url->namesPort || isTls) address.port = url->port;
  address.isTls = isTls;
  path = url->path;
  return Outcome::kOk;
}

std::string PutTogether(const std::string& path, const CameraAddress& address) {
  if (!address.isTls) return path;
  const char* slash = path.starts_with('/') ? "" : "/";
  return "rtsps://" + WithBrackets(WithoutZone(address.host)) + ":" + std::to_string(address.port) + slash + path;
}

bool HoldsLogin(const std::string& path) {
  const auto rest = BehindScheme(Trimmed(path));
  return rest && rest->substr(0, rest->find_first_of("/?#")).find('@') != std::string_view::npos;
}

}  // namespace recorder
