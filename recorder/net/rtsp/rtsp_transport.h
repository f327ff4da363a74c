#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "recorder/net/rtsp/rtsp_headers.h"

namespace recorder {

/// How the packets of one video come: over the RTSP connection (RFC 2326 section 10.12), or over UDP where a camera
/// refuses that. One thread at a time.
class RtspTransport {
 public:
  /// From now on UDP is wished for, with RTP to this port of ours and RTCP to the next.
  void WishForUdp(int rtpPort) { ownPort_ = rtpPort; }
  bool IsUdp() const { return ownPort_ != 0; }

  /// Header line of a SETUP.
  std::string Wish() const;

  /// Takes the Transport header of the answer. False when the camera wants to send in another way than was wished for.
  bool Take(std::string_view grant);

  /// Over the connection: where packets come.
  const RtspChannels& Channels() const { return channels_; }
  /// Over UDP: where they come from.
  const RtspPorts& CameraPorts() const { return ports_; }

  /// One RTCP packet as the connection carries it.
  std::vector<std::uint8_t> ControlFrame(std::span<const std::uint8_t> packet) const;

 private:
  int ownPort_ = 0;  // over UDP
  RtspChannels channels_;
  RtspPorts ports_;
};

}  // namespace recorder
