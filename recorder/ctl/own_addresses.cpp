#include "recorder/ctl/own_addresses.h"

#include <netdb.h>
#include <netinet/in.h>

#include <array>

#include "recorder/utility/interfaces.h"

namespace recorder {

namespace {

/// "" for other families, and for addresses of the link.
std::string NumericText(const sockaddr* address) {
  if (address == nullptr || (address->sa_family != AF_INET && address->sa_family != AF_INET6)) return "";
  const bool isIpv6 = address->sa_family == AF_INET6;
  if (isIpv6 && IN6_IS_ADDR_LINKLOCAL(&reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr)) return "";
  std::array<char, NI_MAXHOST> text{};
  const socklen_t size = isIpv6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
  const bool isThere = getnameinfo(address, size, text.data(), text.size(), nullptr, 0, NI_NUMERICHOST) == 0;
  return isThere ? text.data() : "";
}

}  // namespace

std::vector<std::string> OwnAddresses() {
  std::vector<std::string> addresses;
  const InterfaceList interfaces = ListInterfaces();
  for (const ifaddrs* entry = interfaces.get(); entry != nullptr; entry = entry->ifa_next) {
    if (std::string text = NumericText(entry->ifa_addr); !text.empty()) addresses.push_back(std::move(text));
  }
  return addresses;
}

}  // namespace recorder
