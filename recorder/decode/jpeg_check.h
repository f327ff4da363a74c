#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

// Whether bytes are a whole JPEG (ITU-T T.81 annex B). Any thread.

namespace recorder {

/// A walk from marker to marker of a JPEG, as its bytes arrive.
class JpegWalk {
 public:
  enum class State {
    kMore,    ///< needs what follows
    kEnd,     ///< behind the end marker of a picture with a size and a scan
    kNext,    ///< another JPEG begins within a scan: the end marker of this one is missing
    kBroken,  ///< no JPEG, or none that the recorder takes
  };

  /// `bytes` are those from the start marker on, each time with more behind them.
  State Advance(std::span<const std::uint8_t> bytes);

  /// How far it has come, in bytes from the start marker.
  std::size_t Position() const { return at_; }
  bool HasScan() const { return scans_ > 0; }

 private:
  bool Step(std::span<const std::uint8_t> bytes);
  bool SkipScanData(std::span<const std::uint8_t> bytes);
  bool ReadSegment(std::span<const std::uint8_t> bytes, unsigned marker);
  bool ReadEnd();
  bool Stop(State state);

  std::size_t at_ = 0;
  bool hasSize_ = false;
  bool isInScan_ = false;
  int scans_ = 0;
  State state_ = State::kMore;
};

/// True when `bytes` begin with a picture that has all its markers. Whether its data is whole, they do not tell.
bool HasJpegMarkers(std::span<const std::uint8_t> bytes);

/// True when `bytes` begin with a picture that has all its markers, and a decoder finds all of its data and none that
/// is damaged. What follows the picture is passed over, since cameras pad.
bool IsWholeJpeg(std::span<const std::uint8_t> bytes);

}  // namespace recorder
