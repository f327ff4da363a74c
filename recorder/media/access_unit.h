#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "recorder/media/codecs.h"

namespace recorder {

/// The fields of an RTP packet's fixed header that tell access units apart (RFC 3550 section 5.1).
struct RtpHeader {
  bool marker = false;
  std::uint16_t sequence = 0;
  std::uint32_t timestamp = 0;
  std::uint32_t source = 0;  ///< SSRC
};

/// Nothing when the packet is too short.
std::optional<RtpHeader> ParseRtpHeader(std::span<const std::uint8_t> packet);

/// One coded picture with the parameter sets that came before it.
struct AccessUnit {
  std::vector<std::uint8_t> bytes;
  UnitKind kind = UnitKind::kNoPicture;
};

/// Puts access units together out of depacketized pieces. A unit ends with the marker bit or a new timestamp. One that
/// has a gap in its sequence numbers, or is larger than kLargestUnit, is dropped.
class AccessUnitAssembler {
 public:
  explicit AccessUnitAssembler(std::uint32_t codec) : codec_(codec) {}

  /// Adds the bytes that one packet completed.
  void Add(const RtpHeader& header, std::span<const std::uint8_t> bytes);

  /// The next finished unit, if there is one.
  std::optional<AccessUnit> Take();

 private:
  void Append(std::span<const std::uint8_t> bytes);
  void Finish();

  std::uint32_t codec_;
  std::optional<RtpHeader> last_;
  std::vector<std::uint8_t> open_;
  bool isDamaged_ = false;            // the open unit
  std::vector<AccessUnit> finished_;  // at most two: one packet can end the unit before it and its own
};

}  // namespace recorder
