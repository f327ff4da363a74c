#pragma once

#include <sys/socket.h>

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "recorder/utility/clock.h"
#include "recorder/utility/handle.h"

namespace recorder {

/// What came over UDP.
struct Datagram {
  bool isControl = false;               ///< it came to the port of RTCP
  std::span<const std::uint8_t> bytes;  ///< valid until the next one is received
};

/// Two neighbouring UDP ports for one video of a camera, an even one for RTP and the next for RTCP (RFC 3550 section
/// 11), beside the connection over which the camera was asked. What is not sent by the camera at the other end of that
/// connection is dropped.
///
/// Owner:   holds both ports until it is destroyed.
/// Thread:  one at a time.
/// Time:    only Wait() waits.
/// Failure: as over UDP: what cannot be sent is lost.
class UdpPair {
 public:
  /// Opens them at the local address of the TCP connection `connection`. Nothing when none are to be had.
  static std::optional<UdpPair> OpenBeside(int connection);

  /// That of RTP.
  int RtpPort() const;

  /// From now on datagrams go to these ports of the camera, and come from them alone. 0: from the one that it uses
  /// first.
  void Expect(int rtpPort, int rtcpPort);

  void SendRtp(std::span<const std::uint8_t> bytes) const { Send(rtp_, bytes); }
  /// As long as the camera's port of RTCP is not known, to the one behind that of its RTP.
  void SendRtcp(std::span<const std::uint8_t> bytes) const;

  /// Waits until there is something to read, here or of `connection`. True when that is so of the latter.
  [[nodiscard]] bool Wait(int connection, Clock::time_point until) const;

  /// Takes what has come. Nothing when it was nothing, or not the camera's.
  std::optional<Datagram> Receive();

 private:
  struct Port {
    FileDescriptor descriptor;
    sockaddr_storage camera{};  // its port is 0 until it is known
  };

  UdpPair(Port rtp, Port rtcp);
  static void Send(const Port& port, std::span<const std::uint8_t> bytes);
  static void Expect(Port& port, int number);
  std::optional<Datagram> ReceiveFrom(Port& port, bool isControl);

  Port rtp_;
  Port rtcp_;
  std::vector<std::uint8_t> buffer_;
};

}  // namespace recorder
