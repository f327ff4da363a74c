#include "recorder/net/camera_url.h"

#include <algorithm>
#include <new>
#include <utility>

#include "recorder/net/camera_address.h"
#include "recorder/net/curl_handles.h"
#include "recorder/net/percent.h"
#include "recorder/utility/text.h"
#include "recorder/utility/translate.h"

namespace recorder {
namespace {

constexpr std::pair<std::string_view, int> kSchemePorts[] = {
    {"http", kHttpPort}, {"https", kHttpsPort}, {"rtsp", kRtspPort}, {"rtsps", kRtspsPort}};

/// An address without user and password; nothing unless exactly two slashes stand before the host: libcurl takes more.
/// It also ends a password at the first '@', so the login is cut off here.
std::optional<std::string> WithoutLogin(std::string_view text) {
  constexpr std::string_view kAfterScheme = "://";
  const std::size_t schemeEnd = std::min(text.find(':'), text.size());
  if (!text.substr(schemeEnd).starts_with(kAfterScheme)) return std::nullopt;
  std::string_view rest = text.substr(schemeEnd + kAfterScheme.size());
  rest.remove_prefix(rest.substr(0, rest.find_first_of("/?#")).rfind('@') + 1);  // 0 when there is none
  if (rest.starts_with('/')) return std::nullopt;
  return std::string(text.substr(0, schemeEnd)).append(kAfterScheme).append(rest);
}

UrlHandle Read(const std::string& text) {
  constexpr unsigned int kFlags = CURLU_NON_SUPPORT_SCHEME | CURLU_PATH_AS_IS | CURLU_ALLOW_SPACE;
  UrlHandle url(curl_url());
  if (!url) throw std::bad_alloc();
  return curl_url_set(url.get(), CURLUPART_URL, text.c_str(), kFlags) == CURLUE_OK ? std::move(url) : nullptr;
}

int PortOf(const UrlHandle& url, std::string_view scheme) {
  const auto digits = PartOf(url, CURLUPART_PORT);
  return digits ? ParseNumber<int>(*digits).value_or(0) : Translate(kSchemePorts, scheme, 0);
}

std::string PathOf(const UrlHandle& url) {
  const auto query = PartOf(url, CURLUPART_QUERY);
  return PercentEncoded(PartOf(url, CURLUPART_PATH).value_or("/") + (query ? "?" + *query : ""), kAddressSigns);
}

}  // namespace

std::optional<CameraUrl> ParseCameraUrl(std::string_view text) {
  text = Trimmed(text);
  const auto address = WithoutLogin(text);
  if (!address || HoldsControls(text)) return std::nullopt;
  const UrlHandle url = Read(*address);
  if (!url) return std::nullopt;
  const std::string scheme = PartOf(url, CURLUPART_SCHEME).value_or("");
  const std::string host = NormalizedHost(PartOf(url, CURLUPART_HOST).value_or(""));
  if (host.empty() || PartOf(url, CURLUPART_PORT) == "0") return std::nullopt;
  return CameraUrl{scheme, host, PortOf(url, scheme), PartOf(url, CURLUPART_PORT).has_value(), PathOf(url)};
}

std::optional<CameraUrl> ParseHttpUrl(std::string_view text) {
  auto url = ParseCameraUrl(text);
  return url && (url->scheme == "http" || url->scheme == "https") ? url : std::nullopt;
}

}  // namespace recorder
