#include "recorder/media/rtp_header.h"

#include <cstddef>

namespace recorder {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kFixedSize = 12;

/// Of the whole header, with its list of sources and its extension (section 5.3.1).
std::size_t HeaderSize(Bytes packet) {
  const std::size_t fixed = kFixedSize + std::size_t{4} * (packet[0] & 0x0f);
  const bool hasExtension = (packet[0] & 0x10) != 0 && packet.size() >= fixed + 4;
  if (!hasExtension) return fixed;
  return fixed + 4 + std::size_t{4} * static_cast<std::size_t>(packet[fixed + 2] << 8 | packet[fixed + 3]);
}

std::size_t PayloadSize(Bytes packet) {
  const std::size_t padding = (packet[0] & 0x20) != 0 ? packet.back() : 0;
  const std::size_t around = HeaderSize(packet) + padding;
  return packet.size() > around ? packet.size() - around : 0;
}

}  // namespace

std::optional<RtpHeader> ParseRtpHeader(Bytes packet) {
  if (packet.size() < kFixedSize) return std::nullopt;
  const auto number = [&packet](std::size_t at) {
    return static_cast<std::uint32_t>(packet[at] << 24 | packet[at + 1] << 16 | packet[at + 2] << 8 | packet[at + 3]);
  };
  return RtpHeader{(packet[1] & 0x80) != 0, static_cast<std::uint16_t>(packet[2] << 8 | packet[3]), number(4),
                   number(8), PayloadSize(packet)};
}

}  // namespace recorder
