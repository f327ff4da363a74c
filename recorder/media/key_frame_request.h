#pragma once

#include <array>
#include <cstdint>

#include "recorder/utility/clock.h"

namespace recorder {

/// One RTCP compound that asks the camera for a key frame of the stream `source`, an SSRC, now: a receiver report
/// without a block (RFC 3550 section 6.4.2), a picture loss indication (RFC 4585 section 6.3.1) and a full intra
/// request with this number (RFC 5104 section 4.3.1). Cameras heed one or the other. `number` must be another one than
/// in the request before: the same one is a repetition, which a camera may pass over.
std::array<std::uint8_t, 40> KeyFrameRequest(std::uint32_t source, std::uint8_t number);

/// When to ask for a key frame, as long as none that is whole has come.
///
/// The first request goes at once. The second follows as soon as that should have had its effect, since it may travel
/// another way; from then on there is one each second, and one soon after each key frame that was damaged.
class KeyFramePace {
 public:
  /// `roundTrip`: how long the camera takes to answer.
  explicit KeyFramePace(Clock::duration roundTrip = {}) : soon_(roundTrip + std::chrono::milliseconds(50)) {}

  /// To be asked behind each picture. `isDamaged`: it was a key frame, and could not be used.
  bool IsDue(Clock::time_point now, bool isDamaged);
  /// Says that one was sent just now.
  void Sent(Clock::time_point now);
  /// How many were sent.
  unsigned int Count() const { return count_; }

 private:
  Clock::duration soon_;
  unsigned int count_ = 0;
  bool isSoon_ = true;  // rather than in a second
  Clock::time_point last_;
};

}  // namespace recorder
