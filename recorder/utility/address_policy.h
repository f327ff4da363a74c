#pragma once

#include <sys/socket.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace recorder {

/// An IPv6 address in network order; IPv4 addresses stand in their mapped form (RFC 4291 section 2.5.5.2), so that one
/// address has one form.
using IpAddress = std::array<std::uint8_t, 16>;

/// The address in an IPv4 or IPv6 socket address; nothing for another family.
std::optional<IpAddress> AddressOf(const sockaddr& address);

/// All addresses whose first `bits` bits are those of `start`; but "::/0" and the like hold no IPv4 address, in its
/// mapped form, which is a matter of ranges of IPv4.
struct AddressRange {
  IpAddress start{};
  int bits = 128;  ///< of 128, also for IPv4

  bool Contains(const IpAddress& address) const;
};

/// Reads "10.1.0.0/16", "fe80::/10" or one address without a prefix length; nothing for any other text.
std::optional<AddressRange> ParseAddressRange(const std::string& text);

/// Where a caller may send the recorder: he names the camera's address, but the connection comes from this machine,
/// which may reach what he cannot.
struct AddressPolicy {
  std::vector<AddressRange> allow;  ///< opened, although closed by default
  std::vector<AddressRange> deny;   ///< closed, whatever `allow` says

  /// Closed by default: the machine itself (loopback), the link (with the metadata services of cloud machines), and
  /// addresses that hide an IPv4 address. Closed always: what is no host's address. An IPv6 address that leads to an
  /// IPv4 one (NAT64, 6to4) is judged as both. Pure; any thread.
  bool Allows(const IpAddress& address) const;
};

/// Sets the policy of this process. Call once, before the first request.
void SetAddressPolicy(AddressPolicy policy);

/// The variable of the environment that tells that port to processes that are not asked there.
inline constexpr char kOwnPortVariable[] = "RECORDER_PORT";

/// Tells on which port of this machine the recorder itself is asked, which no policy opens. Any thread.
void SetOwnPort(int port);

/// True when the policy of this process lets the recorder connect to `address` and that is not the recorder itself.
/// Asked for every connection, after the name's lookup. Any thread.
bool MayConnectTo(const sockaddr& address);

}  // namespace recorder
