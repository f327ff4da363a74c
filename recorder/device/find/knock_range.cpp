#include "recorder/device/find/knock_range.h"

#include <optional>

#include "recorder/device/find/discover.h"
#include "recorder/utility/address_policy.h"

namespace recorder::find {
namespace {

constexpr int kIpv4Bits = 32;

/// Its first address and how many there are.
struct Span {
  Ipv4Number first = 0;
  std::uint64_t count = 0;
};

std::optional<Span> SpanOf(const std::string& text) {
  const std::optional<AddressRange> range = ParseAddressRange(text);
  if (!range || text.find(':') != std::string::npos) return std::nullopt;
  constexpr std::size_t kIpv4At = 12;  // in the mapped form
  constexpr int kMappedBits = 96;
  Ipv4Number address = 0;
  for (std::size_t i = kIpv4At; i < range->start.size(); ++i) address = address << 8 | range->start[i];
  const std::uint64_t count = std::uint64_t{1} << (kIpv4Bits - (range->bits - kMappedBits));
  return Span{address & ~static_cast<Ipv4Number>(count - 1), count};
}

bool IsAllowed(Ipv4Number address) {
  const sockaddr_in place = SocketAddress(address, 0);
  return MayConnectTo(reinterpret_cast<const sockaddr&>(place));
}

}  // namespace

std::vector<Ipv4Number> AddressesToKnockAt(const std::string& range) {
  const std::optional<Span> span = SpanOf(range);
  if (!span) throw DiscoverRefused("a range is written as 192.168.1.0/24, of IPv4");
  if (span->count > kMostKnockedAddresses) {
    throw DiscoverRefused("the range has " + std::to_string(span->count) + " addresses; at most " +
                          std::to_string(kMostKnockedAddresses) + " (/22) can be tried at once");
  }
  std::vector<Ipv4Number> addresses;
  for (std::uint64_t i = 0; i < span->count; ++i) {
    const Ipv4Number address = span->first + static_cast<Ipv4Number>(i);
    if (IsAllowed(address)) addresses.push_back(address);
  }
  if (addresses.empty()) throw DiscoverRefused("the address policy closes every address of the range");
  return addresses;
}

}  // namespace recorder::find
