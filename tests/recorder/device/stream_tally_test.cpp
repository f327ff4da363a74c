#include "recorder/device/find/stream_tally.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace recorder::find {
namespace {

constexpr int kClock = 1000;

struct TallyCase {
  const char* name;
  std::vector<std::uint32_t> times;     ///< of units of 1000 bytes
  std::vector<std::uint32_t> keyTimes;  ///< those of key frames
  double frameRate, bitRate, distance, moreThan;
  bool isSure;
};

const TallyCase kCases[] = {
    {"One", {5000}, {5000}, 0, 0, 0, 0, false},
    {"NoKeyFrame", {0, 500, 1000, 1500}, {}, 2, 16, 0, 1.5, false},
    {"TimeBeginsAgainAtZero", {0xFFFFFA24, 0, 1500, 3000}, {0xFFFFFA24, 0, 1500, 3000}, 1 / 1.5, 8 / 1.5, 1.5, 0, true},
    {"WholeDistancesAlone", {0, 100, 1100, 2100, 3100}, {100, 2100}, 1, 8, 2, 0, false},
    {"KeyFrameForWhoeverComes", {0, 1000, 2000, 3000, 4000, 5000}, {0, 1000}, 1, 8, 0, 4, false},
    {"PartsOfOneUnit", {0, 0, 1000, 1000, 2000, 2000}, {0}, 1, 16, 0, 2, false},
    {"ShownInAnotherOrder", {0, 3000, 1000, 2000, 6000, 4000, 5000}, {0, 3000, 6000}, 4 / 6., 32 / 6., 3, 0, true},
    {"Leap", {0, 1000, 2000, 90000, 90500, 91000}, {0, 2000, 90000}, 2, 16, 0, 1, false},
};

}  // namespace

TEST(StreamTallyTest, CountsByTheTimesOfUnits) {
  for (const TallyCase& row : kCases) {
    SCOPED_TRACE(row.name);
    StreamTally tally(kClock);
    std::uint64_t bytes = 0;
    for (const std::uint32_t time : row.times) {
      tally.Add(time, std::ranges::find(row.keyTimes, time) != row.keyTimes.end(), bytes += 1000);
    }
    const StreamFigures figures = tally.Figures();
    EXPECT_NEAR(figures.frameRate, row.frameRate, 0.001);
    EXPECT_NEAR(figures.bitRate, row.bitRate, 0.001);
    EXPECT_NEAR(figures.keyFrameDistance, row.distance, 0.001);
    EXPECT_NEAR(figures.keyFrameMoreThan, row.moreThan, 0.001);
    EXPECT_EQ(tally.IsSure(), row.isSure);
  }
}

}  // namespace recorder::find
