#include "recorder/device/find/own_networks.h"

#include <arpa/inet.h>
#include <net/if.h>

#include <array>
#include <bit>
#include <cerrno>
#include <system_error>

#include "recorder/utility/address_policy.h"
#include "recorder/utility/interfaces.h"
#include "recorder/utility/text.h"

namespace recorder::find {
namespace {

const in_addr& Ipv4Of(const sockaddr& address) { return reinterpret_cast<const sockaddr_in&>(address).sin_addr; }

bool IsSearchable(const ifaddrs& entry) {
  constexpr unsigned int kUsable = IFF_UP | IFF_MULTICAST;
  const bool isUsable = (entry.ifa_flags & kUsable) == kUsable && entry.ifa_netmask != nullptr;
  return isUsable && entry.ifa_addr != nullptr && entry.ifa_addr->sa_family == AF_INET && MayConnectTo(*entry.ifa_addr);
}

OwnNetwork NetworkOf(const ifaddrs& entry) {
  return {entry.ifa_name, static_cast<int>(if_nametoindex(entry.ifa_name)), Ipv4Of(*entry.ifa_addr),
          std::popcount(Ipv4Of(*entry.ifa_netmask).s_addr)};
}

}  // namespace

std::string NameOf(const OwnNetwork& network) {
  constexpr int kAllBits = 32;
  const std::uint32_t mask = network.bits == 0 ? 0 : ~std::uint32_t{0} << (kAllBits - network.bits);
  const in_addr first{network.address.s_addr & htonl(mask)};
  std::array<char, INET_ADDRSTRLEN> text{};
  inet_ntop(AF_INET, &first, text.data(), text.size());
  return std::string(text.data()) + '/' + std::to_string(network.bits);
}

std::vector<OwnNetwork> SearchableNetworks(const std::optional<std::string>& interface) {
  const InterfaceList interfaces = ListInterfaces();
  if (!interfaces) throw std::system_error(errno, std::generic_category(), "network interfaces");
  std::vector<OwnNetwork> networks;
  for (const ifaddrs* entry = interfaces.get(); entry != nullptr; entry = entry->ifa_next) {
    const bool isWanted = !interface || *interface == entry->ifa_name;
    if (isWanted && IsSearchable(*entry)) networks.push_back(NetworkOf(*entry));
  }
  return networks;
}

std::string WhyNoNetwork(const std::optional<std::string>& interface) {
  constexpr char kWanted[] = "up with multicasts and an IPv4 address that the address policy allows";
  if (!interface) return std::string("no network interface is ") + kWanted;
  const std::string name = EscapeControls(*interface);
  if (if_nametoindex(interface->c_str()) == 0) return "there is no network interface " + name;
  return "the network interface " + name + " is not " + kWanted;
}

}  // namespace recorder::find
