#pragma once

#include <cstdint>
#include <optional>

namespace recorder::find {

/// What the units of a stream tell of it, in its own time. 0: not known.
struct StreamFigures {
  double frameRate = 0;         ///< pictures a second
  double bitRate = 0;           ///< kbit/s of payload
  double keyFrameDistance = 0;  ///< s; the longest that was seen
  double keyFrameMoreThan = 0;  ///< s; where the distance was not seen, for how long there was no key frame
  double seconds = 0;           ///< from the first unit to the last
};

/// Counts the units of a stream as they come. Their times are those of RTP (RFC 3550 section 5.1), which the camera
/// took with its pictures, so that it does not matter when the network brings them. One thread.
class StreamTally {
 public:
  /// `clockRate`: of the times, Hz.
  explicit StreamTally(int clockRate) : clockRate_(clockRate) {}

  /// Takes a unit: its time, whether it is a key frame, and how many bytes of payload the stream has brought so far.
  /// One with the time of the last is a part of that. Where the time leaps, counting begins anew.
  void Add(std::uint32_t time, bool isKeyFrame, std::uint64_t bytes);

  bool IsEmpty() const { return !first_; }

  /// True when enough was seen: two whole distances of key frames, and three seconds.
  bool IsSure() const;

  /// Rates are those of whole distances of key frames, where there is one.
  StreamFigures Figures() const;

 private:
  /// A unit, and what came up to it.
  struct Point {
    std::int64_t time = 0;
    std::int64_t units = 0;
    std::uint64_t bytes = 0;
  };

  bool IsLeap(std::int64_t step) const;
  void TakeKeyFrame();
  double Seconds(const Point& from, const Point& to) const;

  int clockRate_;
  std::uint32_t lastTime_ = 0;  // as it came
  std::optional<Point> first_;
  Point last_;
  std::optional<Point> firstKey_;
  Point lastKey_;
  int distances_ = 0;
  double longest_ = 0;  // of them, s
};

}  // namespace recorder::find
