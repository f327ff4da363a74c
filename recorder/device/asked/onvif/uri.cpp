#include "recorder/device/asked/onvif/uri.h"

#include <algorithm>
#include <utility>

#include "recorder/net/camera_address.h"
#include "recorder/net/percent.h"
#include "recorder/utility/text.h"
#include "recorder/utility/translate.h"

namespace recorder::onvif {
namespace {

constexpr std::pair<std::string_view, int> kSchemePorts[] = {
    {"http", kHttpPort}, {"https", kHttpsPort}, {"rtsp", kRtspPort}, {"rtsps", 322}};

/// The port `digits`, `standard` when there are none, nothing when they are no port.
std::optional<int> PortOf(std::string_view digits, int standard) {
  if (digits.empty()) return standard;
  const auto port = ParseNumber<int>(digits);
  return port && *port >= 1 && *port <= 65535 ? port : std::nullopt;
}

}  // namespace

std::optional<Uri> ParseUri(std::string_view text) {
  constexpr std::string_view kAfterScheme = "://";
  const std::size_t schemeEnd = text.find(kAfterScheme);
  if (schemeEnd == std::string_view::npos || schemeEnd == 0) return std::nullopt;
  const std::string scheme = LowerCase(text.substr(0, schemeEnd));
  std::string_view rest = text.substr(schemeEnd + kAfterScheme.size());
  rest = TakeUntil(rest, '#');

  const std::size_t authorityEnd = rest.find_first_of("/?");
  std::string_view authority = rest.substr(0, authorityEnd);
  authority.remove_prefix(authority.rfind('@') + 1);
  if (authority.empty()) return std::nullopt;
  const std::size_t addressEnd = authority.rfind(']') + 1;  // an IPv6 address is full of colons; 0 when there is none
  const std::string_view host = authority.substr(0, authority.find(':', addressEnd));
  const std::string_view digits = authority.substr(std::min(host.size() + 1, authority.size()));
  const auto port = PortOf(digits, Translate(kSchemePorts, scheme, 0));
  if (!port) return std::nullopt;

  const std::string_view path = authorityEnd == std::string_view::npos ? "" : rest.substr(authorityEnd);
  return Uri{scheme, std::string(host), *port,
             (path.starts_with('/') ? "" : "/") + PercentEncoded(path, kAddressSigns)};
}

std::optional<Uri> ParseHttpUri(std::string_view text) {
  auto uri = ParseUri(text);
  return uri && (uri->scheme == "http" || uri->scheme == "https") ? uri : std::nullopt;
}

std::optional<ModelPath> SnapshotPath(std::string_view text, int servicePort) {
  const auto uri = ParseHttpUri(text);
  if (!uri) return std::nullopt;
  if (uri->port == servicePort) return ModelPath{uri->path, std::nullopt};
  if ((uri->scheme == "https") != (uri->port == kHttpsPort)) return std::nullopt;  // a path tells TLS by its port alone
  return ModelPath{uri->path, uri->port};
}

}  // namespace recorder::onvif
