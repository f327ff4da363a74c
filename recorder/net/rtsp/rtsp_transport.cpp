#include "recorder/net/rtsp/rtsp_transport.h"

#include <algorithm>
#include <array>

namespace recorder {

std::string RtspTransport::Wish() const {
  if (!IsUdp()) return "Transport: RTP/AVP/TCP;unicast;interleaved=0-1\r\n";
  return "Transport: RTP/AVP;unicast;client_port=" + std::to_string(ownPort_) + "-" + std::to_string(ownPort_ + 1) +
         "\r\n";
}

bool RtspTransport::Take(std::string_view grant) {
  if (IsUdp()) {
    const auto ports = ParseUdpTransport(grant);
    ports_ = ports.value_or(ports_);
    return ports.has_value();
  }
  const auto channels = ParseTransport(grant);
  channels_ = channels.value_or(channels_);
  return channels.has_value();
}

std::vector<std::uint8_t> RtspTransport::ControlFrame(std::span<const std::uint8_t> packet) const {
  const std::array<std::uint8_t, 4> header = {'$', channels_.rtcp, static_cast<std::uint8_t>(packet.size() >> 8),
                                              static_cast<std::uint8_t>(packet.size() & 0xff)};
  std::vector<std::uint8_t> frame(header.size() + packet.size());
  std::copy(packet.begin(), packet.end(), std::copy(header.begin(), header.end(), frame.begin()));
  return frame;
}

}  // namespace recorder
