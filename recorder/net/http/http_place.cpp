#include "recorder/net/http/http_place.h"

#include <new>
#include <utility>

#include "recorder/net/curl_handles.h"
#include "recorder/net/percent.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

std::string UrlPart(CURLU* url, CURLUPart part, unsigned int flags = 0) {
  char* text = nullptr;
  if (curl_url_get(url, part, &text, flags) != CURLUE_OK) return "";
  return CurlText(text).get();
}

}  // namespace

HttpPlace PlaceAt(const CameraAddress& camera, std::string path) {
  return {camera.port == kHttpsPort, camera.host, camera.port, std::move(path)};
}

std::optional<std::string> RequestPath(std::string_view path) {
  if (HoldsControls(path)) return std::nullopt;
  return (path.starts_with('/') ? "" : "/") + PercentEncoded(path, kAddressSigns);
}

std::optional<HttpPlace> RedirectTarget(const HttpPlace& from, const std::string& location) {
  const UrlHandle url(curl_url());
  if (!url) throw std::bad_alloc();
  if (curl_url_set(url.get(), CURLUPART_URL, location.c_str(), 0) != CURLUE_OK) return std::nullopt;
  const std::string scheme = UrlPart(url.get(), CURLUPART_SCHEME);
  if (scheme != "http" && scheme != "https") return std::nullopt;

  HttpPlace target{scheme == "https", UrlPart(url.get(), CURLUPART_HOST), 0, ""};
  const bool isSameHost = NormalizedHost(target.host) == NormalizedHost(from.host);
  if (!isSameHost || (from.isTls && !target.isTls)) return std::nullopt;
  target.host = from.host;

  target.port = ParseNumber<int>(UrlPart(url.get(), CURLUPART_PORT, CURLU_DEFAULT_PORT)).value_or(0);
  const std::string query = UrlPart(url.get(), CURLUPART_QUERY);
  const auto path = RequestPath(UrlPart(url.get(), CURLUPART_PATH) + (query.empty() ? "" : "?" + query));
  if (!path) return std::nullopt;
  target.path = *path;
  return target;
}

}  // namespace recorder
