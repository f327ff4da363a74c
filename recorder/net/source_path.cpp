#include "recorder/net/source_path.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "recorder/net/camera_url.h"
#include "recorder/utility/text.h"
#include "recorder/utility/whole_address.h"

namespace recorder {
namespace {

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

}  // namespace recorder
