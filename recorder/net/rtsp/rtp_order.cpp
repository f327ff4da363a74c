#include "recorder/net/rtsp/rtp_order.h"

#include <chrono>
#include <cstddef>

#include "recorder/utility/limits.h"

namespace recorder {
namespace {

/// Networks exchange neighbours; what is not there by then is lost.
constexpr std::chrono::milliseconds kLongestRtpWait{50};

/// A packet that is later than by so many begins a new count: no network is that slow.
constexpr std::int64_t kMostDelayed = 1000;

constexpr std::size_t kFixedHeaderSize = 12;

bool IsRtp(std::span<const std::uint8_t> packet) {
  constexpr int kVersion = 2;
  return packet.size() >= kFixedHeaderSize && packet[0] >> 6 == kVersion;
}

std::uint16_t SequenceOf(std::span<const std::uint8_t> packet) {
  return static_cast<std::uint16_t>(packet[2] << 8 | packet[3]);
}

}  // namespace

void RtpOrder::Add(std::span<const std::uint8_t> packet, Clock::time_point now) {
  if (!IsRtp(packet)) return;
  const std::uint16_t sequence = SequenceOf(packet);
  const Number next = next_.value_or(sequence);
  const Number number = next + static_cast<std::int16_t>(sequence - static_cast<std::uint16_t>(next));
  const bool beginsAnew = number < next - kMostDelayed;
  if (beginsAnew) waiting_.clear();
  next_ = beginsAnew ? number : next;
  if (number < *next_) return;
  if (waiting_.empty()) waitsSince_ = now;
  waiting_.try_emplace(number, packet.begin(), packet.end());
}

std::optional<std::vector<std::uint8_t>> RtpOrder::Take(Clock::time_point now) {
  if (waiting_.empty()) return std::nullopt;
  const auto first = waiting_.begin();
  const bool isWaitOver = waiting_.size() > kMostLateRtp || now >= Until();
  if (first->first != next_ && !isWaitOver) return std::nullopt;
  next_ = first->first + 1;
  waitsSince_ = now;
  return std::move(waiting_.extract(first).mapped());
}

Clock::time_point RtpOrder::Until() const {
  return waiting_.empty() ? Clock::time_point::max() : waitsSince_ + kLongestRtpWait;
}

}  // namespace recorder
