#pragma once

#include <string>
#include <vector>

#include "recorder/net/knock.h"

namespace recorder::find {

inline constexpr std::size_t kMostKnockedAddresses = 1024;

/// The addresses of a range of IPv4 such as "192.168.1.0/24", as far as the address policy allows them. Throws
/// DiscoverRefused, which tells users why: the text is no such range, it has more than kMostKnockedAddresses, or the
/// policy closes all of them. Any thread.
std::vector<Ipv4Number> AddressesToKnockAt(const std::string& range);

}  // namespace recorder::find
