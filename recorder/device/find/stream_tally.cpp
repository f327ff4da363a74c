#include "recorder/device/find/stream_tally.h"

#include <algorithm>
#include <cstdlib>

namespace recorder::find {
namespace {

constexpr int kEnoughDistances = 2;
constexpr double kEnoughSeconds = 3;
constexpr int kLeapSeconds = 10;

}  // namespace

void StreamTally::Add(std::uint32_t time, bool isKeyFrame, std::uint64_t bytes) {
  const std::int64_t step = static_cast<std::int32_t>(time - lastTime_);  // the number may begin again at 0
  if (first_ && IsLeap(step)) *this = StreamTally(clockRate_);
  lastTime_ = time;
  if (first_ && step == 0) return;
  last_ = first_ ? Point{last_.time + step, last_.units + 1, bytes} : Point{0, 0, bytes};
  if (!first_) first_ = last_;
  if (isKeyFrame) TakeKeyFrame();
}

bool StreamTally::IsLeap(std::int64_t step) const { return std::abs(step) > std::int64_t{clockRate_} * kLeapSeconds; }

void StreamTally::TakeKeyFrame() {
  if (firstKey_) {
    ++distances_;
    longest_ = std::max(longest_, Seconds(lastKey_, last_));
  } else {
    firstKey_ = last_;
  }
  lastKey_ = last_;
}

double StreamTally::Seconds(const Point& from, const Point& to) const {
  return static_cast<double>(to.time - from.time) / clockRate_;
}

bool StreamTally::IsSure() const {
  return distances_ >= kEnoughDistances && Seconds(*firstKey_, lastKey_) >= kEnoughSeconds;
}

StreamFigures StreamTally::Figures() const {
  StreamFigures figures;
  if (!first_) return figures;
  const Point& from = distances_ > 0 ? *firstKey_ : *first_;
  const Point& to = distances_ > 0 ? lastKey_ : last_;
  figures.seconds = std::max(Seconds(*first_, last_), 0.0);
  if (const double seconds = Seconds(from, to); seconds > 0) {
    figures.frameRate = static_cast<double>(to.units - from.units) / seconds;
    figures.bitRate = static_cast<double>(to.bytes - from.bytes) * 8 / 1000 / seconds;
  }
  const double before = firstKey_ ? Seconds(*first_, *firstKey_) : 0;
  const double open = std::max(before, Seconds(firstKey_ ? lastKey_ : *first_, last_));
  const bool isSeen = distances_ > 0 && longest_ >= open;
  (isSeen ? figures.keyFrameDistance : figures.keyFrameMoreThan) = std::max(longest_, open);
  return figures;
}

}  // namespace recorder::find
