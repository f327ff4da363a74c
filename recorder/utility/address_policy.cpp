#include "recorder/utility/address_policy.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <utility>

#include "recorder/utility/interfaces.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

constexpr int kAllBits = 128;
constexpr std::size_t kIpv4Size = 4;
constexpr std::size_t kIpv4At = 12;  // where it stands in its mapped form
constexpr int kMappedBits = 96;      // what all mapped ones begin with

AddressPolicy currentPolicy;
std::atomic<int> ownPort = -1;

IpAddress Mapped(const void* ipv4) {
  IpAddress address{};
  address[10] = address[11] = 0xFF;
  std::memcpy(&address[kIpv4At], ipv4, kIpv4Size);
  return address;
}

bool IsMapped(const IpAddress& address) { return address == Mapped(&address[kIpv4At]); }

AddressRange Range(const char* text) { return ParseAddressRange(text).value(); }

bool Holds(const std::vector<AddressRange>& ranges, const IpAddress& address) {
  return std::any_of(ranges.begin(), ranges.end(), [&](const AddressRange& range) { return range.Contains(address); });
}

/// No host has such an address, or it means this one (RFC 6890, RFC 4291).
bool IsNoHost(const IpAddress& address) {
  static const std::vector<AddressRange> kRanges = {
      Range("0.0.0.0/8"),          Range("::/128"),    // unspecified
      Range("224.0.0.0/4"),        Range("ff00::/8"),  // multicast
      Range("255.255.255.255/32"),                     // broadcast
  };
  return Holds(kRanges, address);
}

bool IsLoopback(const IpAddress& address) {
  static const std::vector<AddressRange> kRanges = {Range("127.0.0.0/8"), Range("::1/128")};
  return Holds(kRanges, address);
}

bool IsClosedByDefault(const IpAddress& address) {
  static const std::vector<AddressRange> kRanges = {
      // Link-local; metadata services are at 169.254.169.254.
      Range("169.254.0.0/16"),
      Range("fe80::/10"),
      // Metadata services at addresses of their own.
      Range("fd00:ec2::/32"),
      Range("fd20:ce::254"),
      Range("100.100.100.200"),
      Range("168.63.129.16"),
      Range("192.0.0.192"),
      // Reserved (RFC 1112); some platforms have services there.
      Range("240.0.0.0/4"),
      // IPv4 where only a network's owner knows.
      Range("::/96"),
      Range("2001::/32"),
      Range("64:ff9b:1::/48"),
  };
  return IsLoopback(address) || Holds(kRanges, address);
}

/// The IPv4 address that a packet to `address` ends at, in its mapped form; `address` itself when there is none.
IpAddress Destination(const IpAddress& address) {
  static const std::pair<AddressRange, std::size_t> kTranslated[] = {
      {Range("64:ff9b::/96"), 12},     // NAT64 (RFC 6052)
      {Range("::ffff:0:0:0/96"), 12},  // SIIT (RFC 2765)
      {Range("2002::/16"), 2},         // 6to4 (RFC 3056)
  };
  for (const auto& [range, at] : kTranslated) {
    if (range.Contains(address)) return Mapped(&address[at]);
  }
  return address;
}

/// True for an address of this machine. When they cannot be listed, every address might be one.
bool IsOwn(const IpAddress& address) {
  if (IsLoopback(address)) return true;
  const InterfaceList interfaces = ListInterfaces();
  if (!interfaces) return true;
  for (const ifaddrs* entry = interfaces.get(); entry != nullptr; entry = entry->ifa_next) {
    if (entry->ifa_addr != nullptr && AddressOf(*entry->ifa_addr) == address) return true;
  }
  return false;
}

int PortOf(const sockaddr& address) {
  // Both families have the port at the same place.
  return ntohs(reinterpret_cast<const sockaddr_in&>(address).sin_port);
}

}  // namespace

std::optional<IpAddress> AddressOf(const sockaddr& address) {
  if (address.sa_family == AF_INET) return Mapped(&reinterpret_cast<const sockaddr_in&>(address).sin_addr);
  if (address.sa_family != AF_INET6) return std::nullopt;
  IpAddress bytes{};
  std::memcpy(bytes.data(), &reinterpret_cast<const sockaddr_in6&>(address).sin6_addr, bytes.size());
  return bytes;
}

bool AddressRange::Contains(const IpAddress& address) const {
  if (bits < kMappedBits && IsMapped(address)) return false;
  const auto whole = static_cast<std::ptrdiff_t>(bits / 8);
  if (!std::equal(start.begin(), start.begin() + whole, address.begin())) return false;
  if (bits % 8 == 0) return true;
  const auto next = static_cast<std::size_t>(whole);
  return (start[next] ^ address[next]) >> (8 - bits % 8) == 0;
}

std::optional<AddressRange> ParseAddressRange(const std::string& text) {
  const std::size_t slash = text.find('/');
  const std::string host = text.substr(0, slash);
  AddressRange range;
  int lengthBits = kAllBits;  // of the addresses of this family
  if (in_addr ipv4{}; inet_pton(AF_INET, host.c_str(), &ipv4) == 1) {
    range.start = Mapped(&ipv4);
    lengthBits = 8 * kIpv4Size;
  } else if (inet_pton(AF_INET6, host.c_str(), range.start.data()) != 1) {
    return std::nullopt;
  }
  if (slash == std::string::npos) return range;

  const auto bits = ParseNumber<int>(std::string_view(text).substr(slash + 1));
  if (!bits || *bits < 0 || *bits > lengthBits) return std::nullopt;
  range.bits = kAllBits - lengthBits + *bits;
  return range;
}

bool AddressPolicy::Allows(const IpAddress& address) const {
  const IpAddress destination = Destination(address);
  for (const IpAddress& form : {address, destination}) {
    if (IsNoHost(form) || Holds(deny, form)) return false;
  }
  const bool isClosed = IsClosedByDefault(address) || IsClosedByDefault(destination);
  return !isClosed || Holds(allow, address);
}

void SetAddressPolicy(AddressPolicy policy) { currentPolicy = std::move(policy); }

void SetOwnPort(int port) { ownPort = port; }

bool MayConnectTo(const sockaddr& address) {
  const std::optional<IpAddress> ip = AddressOf(address);
  if (!ip || !currentPolicy.Allows(*ip)) return false;
  return PortOf(address) != ownPort || !(IsOwn(*ip) || IsOwn(Destination(*ip)));
}

}  // namespace recorder
