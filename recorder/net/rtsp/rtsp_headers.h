#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Headers of an answer to SETUP (RFC 2326 section 12). Pure; any thread.

namespace recorder {

/// The channels on which packets come.
struct RtspChannels {
  std::uint8_t rtp = 0;
  std::uint8_t rtcp = 1;
};

/// The channels that the camera chose in its Transport header; nothing when it wants to send in another way.
std::optional<RtspChannels> ParseTransport(std::string_view transport);

/// What its Session header says.
struct RtspSessionId {
  std::string id;  ///< "" when there is none
  std::chrono::milliseconds timeout = std::chrono::seconds(60);
};

RtspSessionId ParseSession(std::string_view session);

}  // namespace recorder
