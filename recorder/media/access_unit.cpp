#include "recorder/media/access_unit.h"

#include <cstddef>

#include "recorder/utility/limits.h"

namespace recorder {
namespace {

using Bytes = std::span<const std::uint8_t>;

}  // namespace

std::optional<RtpHeader> ParseRtpHeader(Bytes packet) {
  constexpr std::size_t kFixedSize = 12;
  if (packet.size() < kFixedSize) return std::nullopt;
  const auto number = [&packet](std::size_t at) {
    return static_cast<std::uint32_t>(packet[at] << 24 | packet[at + 1] << 16 | packet[at + 2] << 8 | packet[at + 3]);
  };
  return RtpHeader{(packet[1] & 0x80) != 0, static_cast<std::uint16_t>(packet[2] << 8 | packet[3]), number(4),
                   number(8)};
}

void AccessUnitAssembler::Add(const RtpHeader& header, Bytes bytes) {
  const RtpHeader last = last_.value_or(header);
  const bool isRepeated = last_ && header.source == last.source && header.sequence == last.sequence;
  if (isRepeated) return;
  const bool isNext = header.source == last.source && header.sequence == static_cast<std::uint16_t>(last.sequence + 1);
  const bool hasGap = last_ && !isNext;
  last_ = header;
  // What is missing may belong to the unit before, to this packet's own, or to both.
  isDamaged_ = isDamaged_ || (hasGap && !open_.empty());
  if (header.timestamp != last.timestamp) Finish();
  isDamaged_ = isDamaged_ || hasGap;
  Append(bytes);
  if (header.marker) Finish();
}

std::optional<AccessUnit> AccessUnitAssembler::Take() {
  if (finished_.empty()) return std::nullopt;
  AccessUnit unit = std::move(finished_.front());
  finished_.erase(finished_.begin());
  return unit;
}

void AccessUnitAssembler::Append(Bytes bytes) {
  isDamaged_ = isDamaged_ || open_.size() + bytes.size() > kLargestUnit;
  if (isDamaged_) {
    open_.clear();
  } else {
    open_.insert(open_.end(), bytes.begin(), bytes.end());
  }
}

void AccessUnitAssembler::Finish() {
  if (std::exchange(isDamaged_, false)) open_.clear();
  const UnitKind kind = ClassifyUnit(codec_, open_);
  if (kind == UnitKind::kNoPicture) {  // parameter sets belong to the picture that follows
    if (open_.size() > kLargestParameterSets) open_.clear();
    return;
  }
  finished_.push_back({std::exchange(open_, {}), kind});
}

}  // namespace recorder
