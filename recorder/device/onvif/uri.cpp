#include "recorder/device/onvif/uri.h"

#include <charconv>
#include <utility>

#include "recorder/net/http_place.h"
#include "recorder/net/text.h"
#include "recorder/utility/translate.h"

namespace recorder::onvif {
namespace {

constexpr std::pair<std::string_view, int> kSchemePorts[] = {
    {"http", kHttpPort}, {"https", kHttpsPort}, {"rtsp", 554}, {"rtsps", 322}};

/// The port that `authority` names, `standard` when it names none, nothing when it is not a port.
std::optional<int> PortOf(std::string_view authority, int standard) {
  const std::size_t hostEnd = authority.rfind(']') + 1;  // an IPv6 address is full of colons; 0 when there is none
  const std::size_t colon = authority.find(':', hostEnd);
  const std::string_view digits = colon == std::string_view::npos ? "" : authority.substr(colon + 1);
  if (digits.empty()) return standard;
  int port = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), port);
  if (error != std::errc() || end != digits.data() + digits.size() || port < 1 || port > 65535) return std::nullopt;
  return port;
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
  const auto port = PortOf(authority, Translate(kSchemePorts, scheme, 0));
  if (authority.empty() || !port) return std::nullopt;

  const std::string_view path = authorityEnd == std::string_view::npos ? "" : rest.substr(authorityEnd);
  return Uri{scheme, *port, (path.starts_with('/') ? "" : "/") + PercentEncoded(path, kAddressSigns)};
}

std::optional<ModelPath> SnapshotPath(std::string_view text, int servicePort) {
  const auto uri = ParseUri(text);
  if (!uri || (uri->scheme != "http" && uri->scheme != "https")) return std::nullopt;
  if (uri->port == servicePort) return ModelPath{uri->path, std::nullopt};
  if ((uri->scheme == "https") != (uri->port == kHttpsPort)) return std::nullopt;  // a path tells TLS by its port alone
  return ModelPath{uri->path, uri->port};
}

}  // namespace recorder::onvif
