#include "recorder/media/access_unit.h"

#include <algorithm>
#include <iterator>

#include "platform/media.h"

namespace recorder {
namespace {

using Bytes = std::span<const std::uint8_t>;

/// What follows the next start code 00 00 01, empty when there is none.
Bytes AfterStartCode(Bytes bytes) {
  constexpr std::uint8_t kStartCode[] = {0, 0, 1};
  const auto found = std::search(bytes.begin(), bytes.end(), std::begin(kStartCode), std::end(kStartCode));
  const auto skipped = std::min<std::ptrdiff_t>(found - bytes.begin() + std::ssize(kStartCode), std::ssize(bytes));
  return bytes.subspan(static_cast<std::size_t>(skipped));
}

bool IsJpeg(Bytes bytes) { return bytes.size() > 2 && bytes[0] == 0xff && bytes[1] == 0xd8; }

/// True when the SEI unit (H.264 section 7.3.2.3.1) says that decoding may start here with an exact picture.
bool IsExactRecoveryPoint(Bytes unit) {
  constexpr std::size_t kRecoveryPoint = 6;
  std::size_t at = 1;
  const auto readNumber = [&unit, &at] {  // a sum of bytes that ends with the first other than 255
    std::size_t number = 0;
    for (; at < unit.size() && unit[at] == 0xff; ++at) number += 0xff;
    return at < unit.size() ? number + unit[at++] : number;
  };
  while (at + 2 < unit.size()) {
    const std::size_t type = readNumber();
    const std::size_t size = readNumber();
    const bool isNow = at < unit.size() && (unit[at] & 0x80) != 0;  // recovery_frame_cnt is 0, written as one set bit
    if (type == kRecoveryPoint) return isNow;
    if (type == 0 && size == 0) return false;
    at += size;
  }
  return false;
}

UnitKind ClassifyH264(Bytes unit) {
  bool isRecoveryPoint = false;
  for (Bytes rest = AfterStartCode(unit); !rest.empty(); rest = AfterStartCode(rest)) {
    const int type = rest[0] & 0x1f;
    if (type == 5) return UnitKind::kKey;
    if (type >= 1 && type <= 4) return isRecoveryPoint ? UnitKind::kRecoveryPoint : UnitKind::kPredicted;
    isRecoveryPoint = isRecoveryPoint || (type == 6 && IsExactRecoveryPoint(rest));
  }
  return UnitKind::kNoPicture;
}

UnitKind ClassifyH265(Bytes unit) {
  for (Bytes rest = AfterStartCode(unit); !rest.empty(); rest = AfterStartCode(rest)) {
    const int type = rest[0] >> 1 & 0x3f;
    if (type >= 16 && type <= 21) return UnitKind::kKey;
    if (type < 32) return UnitKind::kPredicted;
  }
  return UnitKind::kNoPicture;
}

UnitKind ClassifyMpeg4(Bytes unit) {
  constexpr std::uint8_t kVop = 0xb6;
  for (Bytes rest = AfterStartCode(unit); rest.size() > 1; rest = AfterStartCode(rest)) {
    if (rest[0] == kVop) return rest[1] >> 6 == 0 ? UnitKind::kKey : UnitKind::kPredicted;
  }
  return UnitKind::kNoPicture;
}

std::uint32_t RecogniseByStartCodes(Bytes bytes) {
  for (Bytes rest = AfterStartCode(bytes); rest.size() > 1; rest = AfterStartCode(rest)) {
    if (rest[0] >= 0xb0) return kCodecMpeg4;  // H.264 and H.265 keep the highest bit clear
    const bool isH265Set = (rest[0] == 0x40 || rest[0] == 0x42 || rest[0] == 0x44) && rest[1] == 1;  // VPS, SPS, PPS
    if (isH265Set) return kCodecH265;
    const int h264Type = rest[0] & 0x1f;
    if ((rest[0] & 0x80) == 0 && (h264Type == 7 || h264Type == 8)) return kCodecH264;  // SPS, PPS
  }
  return 0;
}

}  // namespace

UnitKind ClassifyUnit(std::uint32_t codec, Bytes unit) {
  switch (codec) {
    case kCodecH264:
      return ClassifyH264(unit);
    case kCodecH265:
      return ClassifyH265(unit);
    case kCodecMpeg4:
      return ClassifyMpeg4(unit);
    case kCodecJpeg:
      return IsJpeg(unit) ? UnitKind::kKey : UnitKind::kNoPicture;
    default:
      return UnitKind::kNoPicture;
  }
}

std::uint32_t RecogniseCodec(Bytes configuration, Bytes frame) {
  if (IsJpeg(frame)) return kCodecJpeg;
  const std::uint32_t codec = RecogniseByStartCodes(configuration);
  return codec != 0 ? codec : RecogniseByStartCodes(frame);
}

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
  isDamaged_ = isDamaged_ || open_.size() + bytes.size() > kMaxUnitSize;
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
    constexpr std::size_t kMaxParameterSets = std::size_t{64} << 10;
    if (open_.size() > kMaxParameterSets) open_.clear();
    return;
  }
  finished_.push_back({std::exchange(open_, {}), kind});
}

}  // namespace recorder
