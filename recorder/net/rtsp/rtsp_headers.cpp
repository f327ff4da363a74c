#include "recorder/net/rtsp/rtsp_headers.h"

#include <charconv>
#include <limits>

#include "recorder/utility/text.h"

namespace recorder {
namespace {

/// Takes the next part up to a semicolon off the front of `rest`. Nothing when it is not "`name`=value".
std::optional<std::string_view> TakeParameter(std::string_view& rest, std::string_view name) {
  const std::string_view part = Trimmed(TakeUntil(rest, ';'));
  const bool isNamed = StartsWithIgnoreCase(part, name) && part.substr(name.size()).starts_with('=');
  return isNamed ? std::optional(part.substr(name.size() + 1)) : std::nullopt;
}

/// Reads "a-b", where the second is the next when it is missing. What is no number stays as it was.
template <class T>
void ReadPair(std::string_view text, T& first, T& second) {
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, first);
  second = static_cast<T>(first + 1);
  if (read.ptr != end && *read.ptr == '-') std::from_chars(read.ptr + 1, end, second);
}

}  // namespace

std::optional<RtspChannels> ParseTransport(std::string_view transport) {
  unsigned int rtp = 0;
  unsigned int rtcp = 1;
  bool isNamed = false;
  for (std::string_view rest = transport; !rest.empty();) {
    const auto channels = TakeParameter(rest, "interleaved");
    if (!channels) continue;
    isNamed = true;
    ReadPair(*channels, rtp, rtcp);
  }
  constexpr unsigned int kMaxChannel = std::numeric_limits<std::uint8_t>::max();
  const bool isInterleaved = isNamed || transport.empty() || transport.find("TCP") != std::string_view::npos;
  if (!isInterleaved || rtp > kMaxChannel || rtcp > kMaxChannel) return std::nullopt;
  return RtspChannels{static_cast<std::uint8_t>(rtp), static_cast<std::uint8_t>(rtcp)};
}

std::optional<RtspPorts> ParseUdpTransport(std::string_view transport) {
  const std::string_view profile = Trimmed(TakeUntil(transport, ';'));
  const bool isUdp = EqualsIgnoreCase(profile, "RTP/AVP") || EqualsIgnoreCase(profile, "RTP/AVP/UDP");
  if (!isUdp && !profile.empty()) return std::nullopt;
  std::uint16_t rtp = 0;
  std::uint16_t rtcp = 0;
  while (!transport.empty()) {
    std::string_view part = TakeUntil(transport, ';');
    if (EqualsIgnoreCase(Trimmed(part), "multicast")) return std::nullopt;
    if (const auto ports = TakeParameter(part, "server_port")) ReadPair(*ports, rtp, rtcp);
  }
  return rtp == 0 ? RtspPorts() : RtspPorts{rtp, rtcp};  // some write "0-1" where they mean none
}

RtspSessionId ParseSession(std::string_view session) {
  RtspSessionId read;
  read.id = Trimmed(TakeUntil(session, ';'));
  while (!session.empty()) {
    const auto timeout = TakeParameter(session, "timeout");
    std::uint16_t seconds = 0;
    if (timeout) std::from_chars(timeout->data(), timeout->data() + timeout->size(), seconds);
    if (seconds > 0) read.timeout = std::chrono::seconds(seconds);
  }
  return read;
}

std::string WholeAddress(std::string_view here, std::string_view location) {
  if (location.empty() || location.find("://") != std::string_view::npos) return std::string(location);
  const std::size_t pathBegin = here.find('/', here.find("://") + 3);
  const std::size_t nameBegin = here.rfind('/', here.find('?')) + 1;
  return std::string(here.substr(0, location.starts_with('/') ? pathBegin : nameBegin)).append(location);
}

}  // namespace recorder
