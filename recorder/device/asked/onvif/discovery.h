#pragma once

#include <cstdint>
#include <string>

// How cameras are asked for by WS-Discovery; discovery_answers.h has what they answer.

namespace recorder::onvif {

inline constexpr char kDiscoveryGroup[] = "239.255.255.250";
inline constexpr std::uint16_t kDiscoveryPort = 3702;

/// A fresh "urn:uuid:..." (RFC 4122, version 4).
std::string MakeMessageId();

/// The datagram that asks all cameras to answer to `messageId`.
std::string MakeProbe(const std::string& messageId);

}  // namespace recorder::onvif
