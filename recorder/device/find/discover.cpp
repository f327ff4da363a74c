#include "recorder/device/find/discover.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <exception>
#include <utility>

#include "recorder/device/find/knock_range.h"
#include "recorder/device/find/network_search.h"
#include "recorder/device/find/own_networks.h"
#include "recorder/utility/log.h"

namespace recorder {
namespace {

using namespace find;

constexpr std::array kCameraPorts = {80, 443, 554, 8000, 8080, 8554};

std::vector<StoredCamera> StoredCameras(const Records& records) {
  std::map<int, CameraIdentity> identities = records.Identities();
  std::vector<StoredCamera> stored;
  for (CameraRecord& record : records.List()) {
    const int id = record.id;
    stored.push_back({std::move(record), std::move(identities[id])});
  }
  return stored;
}

/// Puts what is heard together, and tells it with what is stored.
class Discovery {
 public:
  Discovery(Records* records, const OnDevice& onDevice) : records_(records), onDevice_(onDevice) {
    if (records != nullptr) stored_ = StoredCameras(*records);
  }

  bool Take(const HeardDevice& heard) {
    const FoundDevice* device = devices_.Take(heard);
    if (device == nullptr) return isWanted_;
    const StoredMatch match = FindStored(*device, stored_);
    if (match.state == DeviceState::kKnown) Learn(*device, match);
    isWanted_ = onDevice_(*device, match);
    return isWanted_;
  }

  bool IsWanted() const { return isWanted_; }

 private:
  void Learn(const FoundDevice& device, const StoredMatch& match) {
    if (device.endpoint.empty() && device.serial.empty()) return;
    try {
      for (const CameraRecord& camera : match.cameras) {
        records_->LearnIdentity(camera.id, {device.endpoint, device.serial});
      }
    } catch (const std::exception& failure) {  // the search is still of use
      LogFailure(std::string("How a camera is known again could not be stored: ") + failure.what());
    }
  }

  Records* records_;
  const OnDevice& onDevice_;
  std::vector<StoredCamera> stored_;
  FoundDevices devices_;
  bool isWanted_ = true;
};

HeardDevice DeviceWithPorts(Ipv4Number address, const std::vector<int>& ports) {
  std::array<char, INET_ADDRSTRLEN> text{};
  const in_addr place = SocketAddress(address, 0).sin_addr;
  inet_ntop(AF_INET, &place, text.data(), text.size());
  return {.by = HeardBy::kPorts, .address = text.data(), .openPorts = ports};
}

std::vector<SearchedNetwork> Searched(const std::vector<OwnNetwork>& networks, const std::string& range) {
  std::vector<SearchedNetwork> searched(networks.size());
  std::ranges::transform(networks, searched.begin(), [](const OwnNetwork& network) {
    return SearchedNetwork{NameOf(network), network.interface};
  });
  if (!range.empty()) searched.push_back({range, ""});
  return searched;
}

}  // namespace

std::vector<SearchedNetwork> Discover(const DiscoverRequest& request, Records* records, const OnDevice& onDevice) {
  const auto addresses = request.range.empty() ? std::vector<Ipv4Number>() : AddressesToKnockAt(request.range);
  const std::vector<OwnNetwork> networks = SearchableNetworks(request.interface);
  if (networks.empty() && (addresses.empty() || request.interface))
    throw DiscoverRefused(WhyNoNetwork(request.interface));
  Discovery discovery(records, onDevice);
  if (!networks.empty()) {
    NetworkSearch(networks).Run(request.duration, [&](const HeardDevice& heard) { return discovery.Take(heard); });
  }
  if (discovery.IsWanted()) {
    Knock(addresses, kCameraPorts, [&](Ipv4Number address, const std::vector<int>& ports) {
      return discovery.Take(DeviceWithPorts(address, ports));
    });
  }
  return Searched(networks, request.range);
}

}  // namespace recorder
