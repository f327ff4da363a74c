#pragma once

#include <string>
#include <string_view>
#include <vector>

// What cameras answer to a probe of WS-Discovery (OASIS, draft of April 2005, as ONVIF Core section 7 wants it).

namespace recorder::onvif {

/// One camera that answered. Texts are for people: UTF-8 without control characters, "" when the camera does not say.
struct FoundCamera {
  std::string host;  ///< IPv4 address that the answer came from
  int port = 0;      ///< of its device service
  std::string name;
  std::string hardware;  ///< its model, mostly
  std::string endpoint;  ///< the camera's own lasting id, mostly "urn:uuid:..."

  bool operator==(const FoundCamera&) const = default;
};

/// The cameras that the answer `datagram` from the address `sender` to the probe `messageId` names; none when it is no
/// such answer or names no camera. The host is always the sender's, the port that of the address which the camera gives
/// for it. Pure; an answer of any content is safe to read.
std::vector<FoundCamera> ReadProbeMatches(std::string_view datagram, const std::string& messageId,
                                          const std::string& sender);

}  // namespace recorder::onvif
