#pragma once

#include <netinet/in.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "recorder/device/find/heard_device.h"
#include "recorder/device/find/own_networks.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/handle.h"

namespace recorder::find {

/// What was heard, as it comes. False: no more is wanted.
using OnHeard = std::function<bool(const HeardDevice&)>;

/// Asks some networks by WS-Discovery and multicast DNS who is there, from a port of its own in each, to which the
/// answers come. Answers from addresses that the address policy closes are dropped. One thread.
class NetworkSearch {
 public:
  /// Throws std::system_error.
  explicit NetworkSearch(const std::vector<OwnNetwork>& networks);

  /// Asks twice, since datagrams get lost, and listens until `duration` is over. Throws std::system_error when nothing
  /// could be sent to any network.
  void Run(std::chrono::milliseconds duration, const OnHeard& onHeard);

 private:
  struct Question {
    sockaddr_in group;
    std::string datagram;
  };

  void Send() const;
  bool ListenUntil(Clock::time_point end, const OnHeard& onHeard);
  bool Receive(int socket, const OnHeard& onHeard);
  std::vector<HeardDevice> Read(std::string_view datagram, const sockaddr_in& from) const;

  std::string probeId_;
  std::uint16_t mdnsId_;
  std::vector<Question> questions_;
  std::vector<FileDescriptor> sockets_;  // one a network
  std::vector<char> buffer_;
};

}  // namespace recorder::find
