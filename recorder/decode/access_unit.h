#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "recorder/media/codecs.h"
#include "recorder/media/rtp_header.h"

namespace recorder {

/// One coded picture with the parameter sets that came before it.
struct AccessUnit {
  std::vector<std::uint8_t> bytes;
  UnitKind kind = UnitKind::kNoPicture;
  std::uint32_t timestamp = 0;  ///< of RTP
};

/// Puts access units together out of depacketized pieces. A unit ends with the marker bit. Where there is none, or
/// where it comes in the middle of pictures, a unit ends where the next picture begins, as its first slice and a new
/// timestamp or that marker tell; so it does where each slice has a timestamp of its own. One that has a gap in its
/// sequence numbers, or is larger than kLargestUnit, is dropped.
class AccessUnitAssembler {
 public:
  explicit AccessUnitAssembler(std::uint32_t codec) : codec_(codec) {}

  /// Adds the bytes that one packet completed.
  void Add(const RtpHeader& header, std::span<const std::uint8_t> bytes);

  /// The next finished unit, if there is one. From a camera that sets the marker in the middle of pictures, the first
  /// units may be such beginnings of one; it comes again when more of it is there.
  std::optional<AccessUnit> Take();

 private:
  /// The picture that `open_` begins with. What is behind it belongs to the next one.
  struct Picture {
    std::size_t end = 0;
    std::uint32_t timestamp = 0;
    bool hasMarker = false;  ///< seen behind its last slice so far
    bool isHandedOut = false;
    bool isDamaged = false;
  };

  void GiveUp(std::uint32_t timestamp);
  bool BeginsNext(PieceStart start, std::uint32_t timestamp) const;
  void EndPicture();
  void Append(PieceStart start, std::uint32_t timestamp, std::span<const std::uint8_t> bytes);
  void GoOn(std::uint32_t timestamp);
  void TakeMarker();
  void HandOut();

  std::uint32_t codec_;
  std::optional<RtpHeader> last_;
  std::vector<std::uint8_t> open_;
  std::optional<Picture> picture_;
  bool isInSlice_ = false;            // the last unit of `open_`
  bool hasEarlyMarkers_ = false;      // markers do not end pictures
  std::vector<AccessUnit> finished_;  // at most two: one packet can end the unit before it and its own
};

}  // namespace recorder
