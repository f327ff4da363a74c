#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <vector>

#include "recorder/utility/clock.h"

namespace recorder {

/// Puts the RTP packets of one video in the order in which they were sent (RFC 3550 section 5.1), each once. Where one
/// is missing, those behind it wait for it, at most kMostLateRtp packets and 50 ms; then there is a gap in what comes
/// out. Without a clock; one thread at a time.
class RtpOrder {
 public:
  /// Takes a packet that came `now`. One whose turn is over is dropped, and what is no RTP packet.
  void Add(std::span<const std::uint8_t> packet, Clock::time_point now);

  /// The next packet, if there is one `now`.
  std::optional<std::vector<std::uint8_t>> Take(Clock::time_point now);

  /// When those that wait have waited for long enough.
  Clock::time_point Until() const;

 private:
  using Number = std::int64_t;  // a sequence number with the turns of its 16 bits

  std::optional<Number> next_;
  std::map<Number, std::vector<std::uint8_t>> waiting_;
  Clock::time_point waitsSince_;
};

}  // namespace recorder
