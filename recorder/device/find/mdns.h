#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "recorder/device/find/heard_device.h"

// Multicast DNS (RFC 6762) as far as one question needs it that is asked once from a port of its own (section 5.1): who
// answers, answers to that port, and repeats the question and its number (section 6.7). Services as in RFC 6763.

namespace recorder::find {

inline constexpr char kMdnsGroup[] = "224.0.0.251";
inline constexpr std::uint16_t kMdnsPort = 5353;

/// Services that cameras have, such as "_rtsp._tcp.local".
std::span<const std::string_view> MdnsServices();

/// The datagram that asks who has `service`, by the number `id`.
std::string MdnsQuestion(std::uint16_t id, std::string_view service);

/// The device that the answer `datagram` from the address `sender` to the question `id` tells of; nothing when it is no
/// such answer, or names no service that was asked for. Pure; an answer of any content is safe to read.
std::optional<HeardDevice> ReadMdnsAnswer(std::string_view datagram, std::uint16_t id, const std::string& sender);

}  // namespace recorder::find
