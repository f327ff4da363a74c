#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace recorder {

/// The fields of an RTP packet's header that tell access units apart, and how much of them it brings (RFC 3550 section
/// 5.1).
struct RtpHeader {
  bool marker = false;
  std::uint16_t sequence = 0;
  std::uint32_t timestamp = 0;
  std::uint32_t source = 0;     ///< SSRC
  std::size_t payloadSize = 0;  ///< bytes, without padding
};

/// Nothing when the packet is too short.
std::optional<RtpHeader> ParseRtpHeader(std::span<const std::uint8_t> packet);

}  // namespace recorder
