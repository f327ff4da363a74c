#pragma once

#include <string>
#include <vector>

namespace recorder::find {

/// How it is known that something is there.
enum class HeardBy {
  kOnvif,  ///< it answered a probe of WS-Discovery
  kMdns,   ///< it answered a question of multicast DNS
  kPorts,  ///< it took connections
};

/// What one answer told of a device. Texts are for people: UTF-8 without control characters, "" when it does not say.
struct HeardDevice {
  HeardBy by = HeardBy::kOnvif;
  std::string address = {};  ///< IPv4, from which it answered
  int port = 0;              ///< of its ONVIF service, or of RTSP or what else multicast DNS names; 0: not said
  std::string name = {};
  std::string maker = {};
  std::string model = {};
  std::string endpoint = {};  ///< the id that WS-Discovery has for it, lasting and its own
  std::string serial = {};
  std::vector<int> openPorts = {};  ///< that took a connection; ascending

  bool operator==(const HeardDevice&) const = default;
};

}  // namespace recorder::find
