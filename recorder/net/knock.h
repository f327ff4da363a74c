#pragma once

#include <netinet/in.h>

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "recorder/utility/outcome.h"

namespace recorder {

/// An IPv4 address as a number in the machine's own order, and as the system's calls take it, with a port.
using Ipv4Number = std::uint32_t;
sockaddr_in SocketAddress(Ipv4Number address, int port);

/// An address, and its ports that took a connection: at least one, ascending. False: no more is wanted.
using OnOpenPorts = std::function<bool(Ipv4Number address, const std::vector<int>& ports)>;

/// Tries at which of `ports` (ascending) each of `addresses` takes a TCP connection, which is closed at once; nothing
/// is sent over it. 64 addresses at a time, a second for each such group at most. Connects as ConnectTo does, under the
/// same policy; an address that it closes has no open port. Any thread.
void Knock(std::span<const Ipv4Number> addresses, std::span<const int> ports, const OnOpenPorts& onOpenPorts);

struct KnockPlace {
  std::string host;
  int port = 0;
};

/// Connects once to each place, names looked up, as ConnectTo does, and closes that at once; nothing is sent over it.
/// How each ended, in order: kTimedOut is one that had not answered after half a second, which is often switched off.
/// 32 at a time, by as many threads, which end with the call. Any thread.
std::vector<Outcome> KnockAtEach(std::span<const KnockPlace> places);

}  // namespace recorder
