#include "recorder/watch/schedule.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>

#include "tests/recorder/rows.h"

namespace recorder {
namespace {

using std::chrono::minutes;

constexpr WatchTime kInterval = minutes(5);
constexpr WatchTime kTick = std::chrono::seconds(1);

using Answer = std::function<std::optional<Outcome>(int id)>;

/// Cameras that are watched, of which each answers within a tick.
struct Watch {
  BusyHosts busyHosts = {};
  Schedule schedule{kInterval, busyHosts};
  std::vector<WatchedCamera> cameras;
  WatchTime now{minutes(1000)};
  bool isPutOff = false;  // each check, once
  std::set<int> wasPutOff = {};
  std::map<int, std::vector<WatchTime>> checks = {};  // when, by camera

  void Update() { schedule.Update(cameras, now); }

  void Run(WatchTime time, const Answer& answer) {
    for (const WatchTime end = now + time; now < end; now += kTick) {
      std::vector<DueCheck> atHand;
      for (auto due = schedule.Next(now); due; due = schedule.Next(now)) {
        if (isPutOff && wasPutOff.insert(due->id).second) {
          schedule.PutOff(*due, now + kTick);
        } else {
          wasPutOff.erase(due->id);
          atHand.push_back(*due);
        }
      }
      for (const DueCheck& check : atHand) {
        checks[check.id].push_back(now);
        EXPECT_TRUE(schedule.End(check, answer(check.id), now));
      }
    }
  }
};

Answer Always(Outcome cause) {
  return [cause](int) { return cause; };
}

TEST(Schedule, ChecksEachCameraOnceAnIntervalAndSpreadsThem) {
  Watch watch;
  for (int id = 1; id <= 3000; ++id) watch.cameras.push_back({id, 1, "camera" + std::to_string(id)});
  watch.Update();
  watch.Run(2 * kInterval + kTick, Always(Outcome::kOk));
  std::map<WatchTime, int> checksOfASecond;
  for (const auto& [id, times] : watch.checks) {
    ASSERT_GE(times.size(), 2U) << id;
    EXPECT_NEAR(static_cast<double>((times[1] - times[0]).count()), kInterval.count(), kTick.count()) << id;
    for (const WatchTime time : times) ++checksOfASecond[time];
  }
  for (const auto& [time, count] : checksOfASecond) EXPECT_LE(count, 12) << time.count();  // 10 on average
}

struct PauseCase {
  const char* name;
  std::vector<std::optional<Outcome>> answers;  // then it is well
  std::vector<int> pauses;                      // minutes
};

const PauseCase kPauses[] = {
    {"Well", {}, {5, 5, 5}},
    {"Failing", {Outcome::kBusy, Outcome::kNoSuchStream}, {5, 5, 5}},
    {"Silent", std::vector<std::optional<Outcome>>(7, Outcome::kTimedOut), {5, 10, 20, 40, 60, 60, 60, 5}},
    {"SilentNowAndThen", {Outcome::kTimedOut, Outcome::kUnreachable, Outcome::kOk, Outcome::kTimedOut}, {5, 10, 5, 5}},
    {"PerhapsRefused", {Outcome::kClockUnknown, Outcome::kClockUnknown}, {60, 60, 5}},
    {"ItsProcessDies", {Outcome::kOk, std::nullopt, std::nullopt}, {5, 5, 10, 5}},
    {"ItsProcessDiesBeforeItEverWorked", {std::nullopt, std::nullopt}, {60, 60, 5}},
    {"Refused", {Outcome::kOk, Outcome::kLoginRefused}, {5}},
};

class SchedulePauses : public testing::TestWithParam<PauseCase> {};

TEST_P(SchedulePauses, FollowWhatTheCameraAnswers) {
  for (const bool isPutOff : {false, true}) {
    Watch watch{.cameras = {{1, 1, "camera"}}, .isPutOff = isPutOff};
    watch.Update();
    watch.Run(minutes(400), [&](int id) {
      const std::size_t answered = watch.checks[id].size() - 1;
      return answered < GetParam().answers.size() ? GetParam().answers[answered] : Outcome::kOk;
    });
    const std::vector<WatchTime>& times = watch.checks[1];
    ASSERT_GT(times.size(), GetParam().pauses.size());
    for (std::size_t i = 0; i < GetParam().pauses.size(); ++i) {
      EXPECT_EQ(times[i + 1] - times[i], minutes(GetParam().pauses[i])) << i << isPutOff;
    }
    const bool isRefused = !GetParam().answers.empty() && GetParam().answers.back() == Outcome::kLoginRefused;
    EXPECT_EQ(times.size() == GetParam().answers.size(), isRefused);
  }
}

INSTANTIATE_TEST_SUITE_P(Camera, SchedulePauses, testing::ValuesIn(kPauses), kByName);

struct StartCase {
  const char* name;
  WatchedCamera camera;  // times in milliseconds before the start
  int earliest, latest;  // check after the start, in minutes
};

const StartCase kStarts[] = {
    {"New", {1, 1, "camera"}, 0, 5},
    {"CheckedLongAgo", {1, 1, "camera", "", Outcome::kOk, minutes(90), minutes(70)}, 0, 5},
    {"WasAtHand", {1, 1, "camera", "", Outcome::kOk, minutes(90), WatchTime(1)}, 2, 8},
    {"WasAtHandTheFirstTime", {1, 1, "camera", "", std::nullopt, {}, WatchTime(1)}, 2, 8},
    {"WasCutOffTheFirstTime", {1, 1, "camera", "", std::nullopt, {}, minutes(1), false, true}, 56, 62},
    {"WasCutOffAfterItWorked", {1, 1, "camera", "", Outcome::kOk, minutes(90), WatchTime(1), true, true}, 2, 8},
    {"SilentForLong", {1, 1, "camera", "", Outcome::kTimedOut, minutes(90), minutes(1)}, 56, 62},
    {"SilentForNotSoLong", {1, 1, "camera", "", Outcome::kUnreachable, minutes(21), minutes(1)}, 16, 22},
    {"Refused", {1, 1, "camera", "", Outcome::kLoginRefused, minutes(90), minutes(70)}, 400, 400},
    {"OfALoginThatWasRefused", {2, 1, "camera", "login"}, 50, 56},
};

class ScheduleStart : public testing::TestWithParam<StartCase> {};

TEST_P(ScheduleStart, ChecksNoCameraBeforeItsTurn) {
  WatchedCamera camera = GetParam().camera;
  Watch watch;
  camera.since = watch.now - camera.since;
  if (camera.attempted) camera.attempted = watch.now - *camera.attempted;
  watch.cameras = {camera, {3, 1, "refusing", "login", Outcome::kLoginRefused, watch.now - minutes(9)}};
  watch.Update();
  const WatchTime start = watch.now;
  watch.Run(minutes(400), Always(Outcome::kOk));
  const auto& times = watch.checks[camera.id];
  const WatchTime first = (times.empty() ? watch.now : times.front()) - start;
  EXPECT_GE(first, minutes(GetParam().earliest));
  EXPECT_LE(first, minutes(GetParam().latest) + kTick);
}

INSTANTIATE_TEST_SUITE_P(Camera, ScheduleStart, testing::ValuesIn(kStarts), kByName);

TEST(Schedule, NeverChecksTwoOfOneHostAtOnce) {
  Watch watch{.cameras = {{1, 1, "CAM."}, {2, 1, "cam"}, {3, 1, "other"}}};
  watch.Update();
  watch.now += kInterval;
  const auto first = watch.schedule.Next(watch.now);
  const auto second = watch.schedule.Next(watch.now);
  ASSERT_TRUE(first && second);
  EXPECT_TRUE(first->id == 3 || second->id == 3);
  EXPECT_FALSE(watch.schedule.Next(watch.now));
  for (const auto& check : {first, second}) EXPECT_TRUE(watch.schedule.End(*check, Outcome::kOk, watch.now));
  watch.busyHosts.Take("cam");
  EXPECT_FALSE(watch.schedule.Next(watch.now)) << "a run contacts it";
  EXPECT_LE(watch.schedule.FirstDue(), watch.now) << "it is late";
  watch.busyHosts.GiveBack("cam");
  EXPECT_TRUE(watch.schedule.Next(watch.now));
  EXPECT_GT(watch.schedule.FirstDue(), watch.now);
}

TEST(Schedule, ForgetsTheAnswerOfARecordThatChangedOrWent) {
  for (const bool isRemoved : {false, true}) {
    Watch watch{.cameras = {{1, 1, "camera"}}};
    watch.Update();
    watch.now += kInterval;
    const auto check = watch.schedule.Next(watch.now);
    ASSERT_TRUE(check);
    watch.cameras = {{isRemoved ? 2 : 1, 2, "elsewhere"}};
    watch.Update();
    EXPECT_FALSE(watch.schedule.Next(watch.now + kInterval) && !isRemoved) << "two at once of one camera";
    EXPECT_FALSE(watch.schedule.End(*check, Outcome::kLoginRefused, watch.now));
    watch.Run(2 * kInterval, Always(Outcome::kOk));
    EXPECT_EQ(watch.checks.contains(1), !isRemoved);
  }
}

TEST(Schedule, TriesARefusedLoginAgainOnceItMayWorkAndNotForOtherEdits) {
  for (const Outcome cause : {Outcome::kLoginRefused, Outcome::kClockUnknown}) {
    Watch watch{.cameras = {{1, 1, "camera", "login"}, {2, 1, "camera", "login"}}};
    watch.Update();
    watch.Run(kInterval, Always(cause));
    ASSERT_EQ(watch.checks.size(), 1U) << "the other one may be the same camera";
    WatchedCamera& refused = watch.cameras[static_cast<std::size_t>(watch.checks.begin()->first) - 1];
    refused.cause = cause;
    refused.since = watch.now;
    for (WatchedCamera& camera : watch.cameras) camera.revision = 2;
    watch.Update();
    watch.Run(kInterval, Always(Outcome::kOk));
    EXPECT_EQ(watch.checks[1].size() + watch.checks[2].size(), 1U) << "renamed";
    refused.cause = std::nullopt;
    watch.Update();
    watch.Run(kInterval, Always(Outcome::kOk));
    EXPECT_GE(watch.checks[1].size(), 1U);
    EXPECT_GE(watch.checks[refused.id].size(), 2U);
  }
}

TEST(Schedule, LeavesALoginAloneForAnHourThatACheckWithoutAnAnswerMayHaveTried) {
  Watch watch{.cameras = {{1, 1, "camera", "login"}, {2, 1, "camera", "login"}}};
  watch.Update();
  watch.Run(minutes(50), [](int) { return std::nullopt; });
  ASSERT_EQ(watch.checks.size(), 1U) << "the other one may have the same password";
  const int cutOff = watch.checks.begin()->first;
  EXPECT_EQ(watch.checks[cutOff].size(), 1U);
  watch.cameras[static_cast<std::size_t>(cutOff) - 1].revision = 2;
  watch.Update();
  watch.Run(kInterval, Always(Outcome::kOk));
  EXPECT_EQ(watch.checks[cutOff].size(), 2U) << "edited";
}

}  // namespace
}  // namespace recorder
