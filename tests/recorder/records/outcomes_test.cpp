#include <gtest/gtest.h>

#include "recorder/records/records.h"
#include "recorder/records/refused_logins.h"
#include "recorder/utility/clock.h"
#include "rig/temp_folder.h"

namespace recorder {
namespace {

CameraRecord GateCamera(const std::string& model = "X100") {
  return {0, "gate", "Acme", model, "cam.example", 8080, "admin", "", ""};
}

struct OutcomesTest : testing::Test {
  rig::TempFolder folder;
  Records records{folder.Path()};
};

TEST_F(OutcomesTest, AnOutcomeIsOfWhatIsAskedNow) {
  const std::string password = "secret";
  const int id = records.Add(GateCamera(), "secret");
  const int other = records.Add(GateCamera("Other"), "secret");
  records.NoteOutcome(id, {Outcome::kOk, 5});
  EXPECT_EQ(records.Change(id, {.record = [](CameraRecord& c) { c.channel = "7"; }}), ChangeResult::kDone);
  EXPECT_FALSE(records.OutcomeOf(id)) << "this channel has not worked yet";
  records.NoteOutcome(id, {Outcome::kOk, 5});
  records.NoteOutcome(id, {Outcome::kLoginRefused, 6});
  EXPECT_EQ(records.Change(id, {.password = &password}), ChangeResult::kDone);
  EXPECT_FALSE(records.OutcomeOf(id)) << "this login was not tried yet";
  records.NoteOutcome(id, {Outcome::kTimedOut, 7});
  EXPECT_EQ(records.Outcomes()[id], (CameraOutcome{Outcome::kTimedOut, 7, 5})) << "with the login before it has worked";
  records.NoteOutcome(id, {Outcome::kOk, 8});
  for (const auto status : {CAM_CONN_STATUS_DISABLED, CAM_CONN_STATUS_NORMAL}) {
    EXPECT_EQ(records.OutcomeOf(id)->since, 8);
    records.Change(id, {.record = [status](CameraRecord& camera) { camera.status = status; }});
  }
  EXPECT_GT(records.OutcomeOf(id)->since, 8) << "it was off meanwhile";
  const std::int64_t hourAgo = SecondsNow() - 3600;
  for (const auto& [host, since, isRefused] : {std::tuple("CAM.example.", hourAgo + 9, true),
                                               {"cam.example", hourAgo, false},
                                               {"other", hourAgo + 9, false}}) {
    const CameraChange change{.record = [name = std::string(host)](CameraRecord& c) { c.host = name; },
                              .password = &password};
    EXPECT_EQ(records.Change(other, change), ChangeResult::kDone);
    for (const Outcome cause : {Outcome::kLoginRefused, Outcome::kClockUnknown}) {
      records.NoteOutcome(other, {cause, since});
      EXPECT_EQ(IsLoginRefused(records, *records.Find(id)), isRefused) << host;
      EXPECT_TRUE(IsLoginRefused(records, *records.Find(other)));
    }
  }
}

TEST_F(OutcomesTest, AnOutcomeIsWrittenWhenItChanges) {
  using enum Outcome;
  const Records reader{folder.Path()};
  const int id = records.Add(GateCamera(), "secret");
  const CameraOutcome noted[] = {{kTimedOut, 1, 0}, {kOk, 2, 2}, {kOk, 2, 2}, {kBusy, 4, 2}, {kBusy, 4, 2}};
  for (std::int64_t second = 1; second <= 5; ++second) {
    const std::int64_t before = reader.Version();
    const CameraOutcome& wanted = noted[second - 1];
    records.NoteOutcome(id, {wanted.cause, second});
    EXPECT_EQ(records.Outcomes()[id], wanted);
    EXPECT_EQ(reader.Version() != before, wanted.since == second) << "nothing is written for the same once more";
  }
  records.NoteOutcome(id + 1, {kOk, 9});
  EXPECT_EQ(records.Outcomes().size(), 1U) << "of no camera";
}

TEST_F(OutcomesTest, EachChangeOfAnOutcomeIsAnEvent) {
  using enum Outcome;
  constexpr std::int64_t kDay = 86'400;
  const int first = records.Add(GateCamera(), "secret");
  const int second = records.Add(GateCamera("Other"), "secret");
  records.NoteOutcome(first, {kOk, 1});
  records.NoteOutcome(second, {kOk, 2});
  records.NoteOutcome(first, {kOk, 3});
  records.NoteOutcome(first, {.cause = kTimedOut, .at = 4, .lastSuccess = 3});
  records.NoteOutcome(first, {.cause = kBusy, .at = 5, .revision = 2});  // of a record that is another one by now
  EXPECT_EQ(records.Outcomes()[first], (CameraOutcome{kTimedOut, 4, 3}));

  const CameraEvent all[] = {{1, first, 1, kOk, {}}, {2, second, 2, kOk, {}}, {3, first, 4, kTimedOut, kOk}};
  using Events = std::vector<CameraEvent>;
  EXPECT_EQ(records.EventsBefore(99, 2), (Events{all[2], all[1]}));
  EXPECT_EQ(records.EventsBefore(2, 99), (Events{all[0]}));
  EXPECT_EQ(records.EventsAfter(1, 99), (Events{all[1], all[2]}));
  EXPECT_EQ(records.EventsAfter(0, 99, {.cameraId = first}), (Events{all[0], all[2]}));
  EXPECT_EQ(records.EventsAfter(0, 99, {.since = 2, .cause = kOk}), (Events{all[1]}));
  EXPECT_EQ(records.Flips(4), (std::map<int, int>{{first, 1}}));
  EXPECT_EQ(records.Flips(4, first), records.Flips(4));
  EXPECT_TRUE(records.Flips(4, second).empty() && records.Flips(5).empty());

  records.NoteOutcome(first, {kOk, 90 * kDay + 3});
  EXPECT_EQ(records.EventsAfter(0, 99).size(), 2U) << "older ones are forgotten";
  records.Remove(first);
  EXPECT_EQ(records.EventsAfter(0, 99).size(), 0U) << "of no camera";
}

}  // namespace
}  // namespace recorder
