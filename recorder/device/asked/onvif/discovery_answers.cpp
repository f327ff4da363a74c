#include "recorder/device/asked/onvif/discovery_answers.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "recorder/device/asked/shown_text.h"
#include "recorder/device/asked/xml.h"
#include "recorder/net/camera_address.h"
#include "recorder/net/camera_url.h"
#include "recorder/net/percent.h"
#include "recorder/utility/text.h"

namespace recorder::onvif {
namespace {

constexpr std::string_view kSoap = "http://www.w3.org/2003/05/soap-envelope";
constexpr std::string_view kAddressing = "http://schemas.xmlsoap.org/ws/2004/08/addressing";
constexpr std::string_view kDiscovery = "http://schemas.xmlsoap.org/ws/2005/04/discovery";

std::vector<std::string_view> Words(std::string_view text) {
  std::vector<std::string_view> words;
  while (!(text = Trimmed(text)).empty()) {
    const std::size_t end = std::min(text.find_first_of(" \t\r\n"), text.size());
    words.push_back(text.substr(0, end));
    text.remove_prefix(end);
  }
  return words;
}

/// What the scopes say under `category`, such as "name".
std::string FromScopes(const std::vector<std::string_view>& scopes, std::string_view category) {
  const std::string prefix = "onvif://www.onvif.org/" + std::string(category) + "/";
  const auto scope = std::find_if(scopes.begin(), scopes.end(),
                                  [&](std::string_view text) { return StartsWithIgnoreCase(text, prefix); });
  return scope == scopes.end() ? "" : Shown(PercentDecoded(scope->substr(prefix.size())));
}

/// The port of the service at `sender`: a camera with several addresses names them all, one behind a router its own.
int ServicePort(const std::vector<std::string_view>& addresses, std::string_view sender) {
  std::optional<int> first;
  for (const std::string_view text : addresses) {
    const auto address = ParseHttpUrl(text);
    if (address && address->host == sender) return address->port;
    if (address && !first) first = address->port;
  }
  return first.value_or(kHttpPort);
}

/// Others answer too, whatever the probe asks for.
bool IsCamera(const std::vector<std::string_view>& types, const std::vector<std::string_view>& scopes) {
  const auto isVideo = [](std::string_view type) {
    return type.substr(type.rfind(':') + 1) == "NetworkVideoTransmitter";
  };
  const auto isOnvif = [](std::string_view scope) { return StartsWithIgnoreCase(scope, "onvif://www.onvif.org/"); };
  return std::any_of(types.begin(), types.end(), isVideo) || std::any_of(scopes.begin(), scopes.end(), isOnvif);
}

std::optional<FoundCamera> ReadMatch(const XmlElement& match, const std::string& sender) {
  const std::string typeText = match.Child(kDiscovery, "Types").Text();
  const std::string scopeText = match.Child(kDiscovery, "Scopes").Text();
  const std::string addressText = match.Child(kDiscovery, "XAddrs").Text();
  const auto scopes = Words(scopeText);
  if (!IsCamera(Words(typeText), scopes)) return std::nullopt;
  FoundCamera camera;
  camera.host = sender;
  camera.port = ServicePort(Words(addressText), sender);
  camera.name = FromScopes(scopes, "name");
  camera.hardware = FromScopes(scopes, "hardware");
  camera.endpoint = Shown(match.Child(kAddressing, "EndpointReference").Child(kAddressing, "Address").Text());
  return camera;
}

}  // namespace

std::vector<FoundCamera> ReadProbeMatches(std::string_view datagram, const std::string& messageId,
                                          const std::string& sender) {
  const XmlDocument document(datagram);
  const XmlElement envelope = document.Root();
  if (envelope.Name() != "Envelope" || envelope.Namespace() != kSoap) return {};
  if (envelope.Child(kSoap, "Header").Child(kAddressing, "RelatesTo").Text() != messageId) return {};
  std::vector<FoundCamera> cameras;
  const XmlElement matches = envelope.Child(kSoap, "Body").Child(kDiscovery, "ProbeMatches");
  for (const XmlElement& match : matches.Children(kDiscovery, "ProbeMatch")) {
    if (auto camera = ReadMatch(match, sender)) cameras.push_back(std::move(*camera));
  }
  return cameras;
}

}  // namespace recorder::onvif
