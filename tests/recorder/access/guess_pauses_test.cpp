#include "recorder/access/guess_pauses.h"

#include <gtest/gtest.h>

namespace recorder {
namespace {

using std::chrono::minutes;
using std::chrono::seconds;

constexpr Clock::time_point kStart{};

TEST(GuessPausesTest, DoubleWithEachWrongPasswordUpToAMinute) {
  GuessPauses pauses;
  Clock::time_point now = kStart;
  for (const int wanted : {0, 1, 2, 4, 8, 16, 32, 60, 60}) {
    EXPECT_EQ(pauses.Remaining("admin", "192.0.2.1", now), seconds(wanted));
    now += seconds(wanted);
    EXPECT_EQ(pauses.Remaining("admin", "192.0.2.1", now), seconds(0));
    pauses.AddFailure("admin", "192.0.2.1", now);
  }
}

struct PauseCase {
  const char* name;
  const char* user;
  const char* address;
  seconds later;
  int pause;
};

/// After a failure of "admin" from 192.0.2.1 and one of "hall" from 2001:db8:0:1::5, 10 ms ago or longer.
const PauseCase kPauseCases[] = {
    {"SameUserElsewhere", "admin", "198.51.100.7", seconds(0), 1},
    {"OtherUserFromThere", "guest", "192.0.2.1", seconds(0), 1},
    {"OtherUserElsewhere", "guest", "198.51.100.7", seconds(0), 0},
    {"SameNetwork", "guest", "2001:db8:0:1:ffff::9", seconds(0), 1},
    {"OtherNetwork", "guest", "2001:db8:0:2::5", seconds(0), 0},
    {"Later", "admin", "192.0.2.1", seconds(1), 0},
};

TEST(GuessPausesTest, AreOfTheUserAndOfTheAddress) {
  GuessPauses pauses;
  pauses.AddFailure("admin", "192.0.2.1", kStart);
  pauses.AddFailure("hall", "2001:db8:0:1::5", kStart);
  for (const PauseCase& row : kPauseCases) {
    const auto now = kStart + std::chrono::milliseconds(10) + row.later;
    EXPECT_EQ(pauses.Remaining(row.user, row.address, now), seconds(row.pause)) << row.name;
  }
}

TEST(GuessPausesTest, EndWithTheRightPasswordAndWithTime) {
  GuessPauses pauses;
  for (const char* address : {"192.0.2.1", "192.0.2.1", "198.51.100.7"}) pauses.AddFailure("admin", address, kStart);
  EXPECT_EQ(pauses.Remaining("admin", "192.0.2.1", kStart), seconds(4));
  pauses.Forget("admin", "192.0.2.1");
  EXPECT_EQ(pauses.Remaining("admin", "192.0.2.1", kStart), seconds(1)) << "whoever guesses elsewhere goes on pausing";
  pauses.AddFailure("admin", "198.51.100.7", kStart + minutes(15));
  EXPECT_EQ(pauses.Remaining("admin", "192.0.2.1", kStart + minutes(15)), seconds(1)) << "as after the first";
}

}  // namespace
}  // namespace recorder
