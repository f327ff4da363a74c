#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Headers of answers (RFC 2326 section 12). Pure; any thread.

namespace recorder {

/// The channels on which packets come.
struct RtspChannels {
  std::uint8_t rtp = 0;
  std::uint8_t rtcp = 1;
};

/// The channels that the camera chose in its Transport header; nothing when it wants to send in another way, such as
/// over UDP.
std::optional<RtspChannels> ParseTransport(std::string_view transport);

/// The ports of a camera from which it sends over UDP; 0: not named.
struct RtspPorts {
  int rtp = 0;
  int rtcp = 0;
};

/// Those in its Transport header; nothing when it wants to send in another way, such as by multicast.
///
/// What else stands there is not believed: of "client_port", "source" and "ssrc" cameras say what is not so.
std::optional<RtspPorts> ParseUdpTransport(std::string_view transport);

/// What its Session header says.
struct RtspSessionId {
  std::string id;  ///< "" when there is none
  std::chrono::milliseconds timeout = std::chrono::seconds(60);
};

RtspSessionId ParseSession(std::string_view session);

/// The address that a Location header stands for, in which cameras leave out what is as in `here`, the address that was
/// asked.
std::string WholeAddress(std::string_view here, std::string_view location);

}  // namespace recorder
