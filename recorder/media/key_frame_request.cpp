#include "recorder/media/key_frame_request.h"

#include <algorithm>

namespace recorder {
namespace {

constexpr std::uint8_t kSelf = 1;  // our own SSRC

constexpr Clock::duration kUsual = std::chrono::seconds(1);

}  // namespace

/// The second word of a full intra request is not used, and zero; its stream stands in the entry behind that.
std::array<std::uint8_t, 40> KeyFrameRequest(std::uint32_t source, std::uint8_t number) {
  const auto byteOf = [source](int shift) { return static_cast<std::uint8_t>(source >> shift & 0xff); };
  const std::uint8_t s3 = byteOf(24);
  const std::uint8_t s2 = byteOf(16);
  const std::uint8_t s1 = byteOf(8);
  const std::uint8_t s0 = byteOf(0);
  return {0x80, 201, 0,  1,  0,      0, 0, kSelf,                  // receiver report, no block
          0x81, 206, 0,  2,  0,      0, 0, kSelf, s3, s2, s1, s0,  // payload-specific feedback, format 1
          0x84, 206, 0,  4,  0,      0, 0, kSelf, 0,  0,  0,  0,   // the same, format 4
          s3,   s2,  s1, s0, number, 0, 0, 0};
}

bool KeyFramePace::IsDue(Clock::time_point now, bool isDamaged) {
  isSoon_ = isSoon_ || isDamaged;
  return count_ == 0 || now >= last_ + (isSoon_ ? std::min(soon_, kUsual) : kUsual);
}

void KeyFramePace::Sent(Clock::time_point now) {
  isSoon_ = ++count_ == 1;
  last_ = now;
}

}  // namespace recorder
