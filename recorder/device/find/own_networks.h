#pragma once

#include <netinet/in.h>

#include <optional>
#include <string>
#include <vector>

namespace recorder::find {

/// A network of IPv4 that this machine is in.
struct OwnNetwork {
  std::string interface;
  int interfaceIndex = 0;
  in_addr address{};  ///< this machine's
  int bits = 0;       ///< that all addresses of the network have in common
};

/// Such as "192.168.1.0/24".
std::string NameOf(const OwnNetwork& network);

/// The networks that may be searched: the interface is up and takes multicasts, and the address policy lets this
/// machine's own address there be contacted. Those of the one `interface`, or without one all of them. Throws
/// std::system_error when interfaces cannot be listed. Any thread.
std::vector<OwnNetwork> SearchableNetworks(const std::optional<std::string>& interface);

/// For users: why there is none.
std::string WhyNoNetwork(const std::optional<std::string>& interface);

}  // namespace recorder::find
