#include "recorder/net/http/http_place.h"

#include <utility>

#include "recorder/net/camera_url.h"
#include "recorder/net/percent.h"
#include "recorder/utility/text.h"

namespace recorder {
HttpPlace PlaceAt(const CameraAddress& camera, std::string path) {
  return {camera.isTls || camera.port == kHttpsPort, camera.host, camera.port, std::move(path)};
}

std::optional<std::string> RequestPath(std::string_view path) {
  if (HoldsControls(path)) return std::nullopt;
  return (path.starts_with('/') ? "" : "/") + PercentEncoded(path, kAddressSigns);
}

std::optional<HttpPlace> RedirectTarget(const HttpPlace& from, const std::string& location) {
  const auto url = ParseHttpUrl(location);
  const bool isTls = url && url->scheme == "https";
  const bool isOurs = url && url->host == NormalizedHost(from.host) && (isTls || !from.isTls);
  if (!isOurs) return std::nullopt;
  return HttpPlace{isTls, from.host, url->port, url->path};
}

}  // namespace recorder
