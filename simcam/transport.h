#pragma once

#include <optional>
#include <string>

#include "simcam/fault.h"
#include "simcam/udp_sender.h"

namespace simcam {

/// How the packets of one session go to the client: in the RTSP connection, or over UDP. Single-threaded.
class Transport {
 public:
  explicit Transport(const FaultConfig& fault) : fault_(fault) {}

  /// What a SETUP with this Transport header gets of a stream.
  Granted Grant(const std::string& wish, bool isUdpAlone);

  /// The channel of RTP in the connection.
  [[nodiscard]] int Channel() const { return channel_; }
  /// Null when packets go in the connection.
  [[nodiscard]] UdpSender* Udp() { return udp_ ? &*udp_ : nullptr; }

 private:
  Granted GrantChannels(const std::string& wish);

  const FaultConfig& fault_;
  int channel_ = 0;
  std::optional<UdpSender> udp_;
};

}  // namespace simcam
