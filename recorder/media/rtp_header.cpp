#include "recorder/media/rtp_header.h"

#include <cstddef>

namespace recorder {

std::optional<RtpHeader> ParseRtpHeader(std::span<const std::uint8_t> packet) {
  constexpr std::size_t kFixedSize = 12;
  if (packet.size() < kFixedSize) return std::nullopt;
  const auto number = [&packet](std::size_t at) {
    return static_cast<std::uint32_t>(packet[at] << 24 | packet[at + 1] << 16 | packet[at + 2] << 8 | packet[at + 3]);
  };
  return RtpHeader{(packet[1] & 0x80) != 0, static_cast<std::uint16_t>(packet[2] << 8 | packet[3]), number(4),
                   number(8)};
}

}  // namespace recorder
