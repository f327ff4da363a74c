#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace recorder {

/// The fields of an RTP packet's fixed header that tell access units apart (RFC 3550 section 5.1).
struct RtpHeader {
  bool marker = false;
  std::uint16_t sequence = 0;
  std::uint32_t timestamp = 0;
  std::uint32_t source = 0;  ///< SSRC
};

/// Nothing when the packet is too short.
std::optional<RtpHeader> ParseRtpHeader(std::span<const std::uint8_t> packet);

}  // namespace recorder
