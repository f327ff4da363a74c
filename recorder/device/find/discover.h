#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "recorder/device/find/found_devices.h"
#include "recorder/device/find/stored_devices.h"
#include "recorder/records/records.h"

// Which cameras are in the network, and which of them are stored.

namespace recorder {

inline constexpr std::chrono::seconds kUsualDiscovery{5};
inline constexpr std::chrono::seconds kLongestDiscovery{60};

struct DiscoverRequest {
  std::optional<std::string> interface;  ///< network interface to ask from; nothing: all that may be searched
  std::chrono::milliseconds duration = kUsualDiscovery;  ///< how long to listen
  std::string range;  ///< addresses at which cameras' ports are tried as well, "192.168.1.0/24"; "": none
};

/// What cannot be searched, and why, for users.
class DiscoverRefused : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What was searched.
struct SearchedNetwork {
  std::string network;    ///< "192.168.1.0/24"
  std::string interface;  ///< that was asked from; "" for a range, whose addresses were tried
};

/// A device, as it comes; again with the same number when more was heard of it. False: no more is wanted.
using OnDevice = std::function<bool(const find::FoundDevice& device, const find::StoredMatch& stored)>;

/// Asks the networks that this machine is in who is there, by WS-Discovery and multicast DNS, then tries the ports that
/// cameras have at each address of the range. Logs in nowhere. All goes under the address policy. Without `records`
/// every device is new; with them, the endpoint of a stored camera is learnt when it answers at its address.
///
/// Returns what was searched. Throws DiscoverRefused before anything is sent: the range is none, too large or closed,
/// or there is no network to search, and no range or an interface that was asked for; RecordsError; std::system_error.
/// Any thread.
std::vector<SearchedNetwork> Discover(const DiscoverRequest& request, Records* records, const OnDevice& onDevice);

}  // namespace recorder
