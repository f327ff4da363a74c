#include "recorder/watch/flapping.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "recorder/watch/notice_line.h"
#include "rig/temp_folder.h"
#include "tests/recorder/rows.h"

namespace recorder {
namespace {

struct FlappingCase {
  const char* name;
  std::vector<std::int64_t> changes;  // at these seconds
  const char* told;                   // at 10,000 s: c(hange), f(lapping) or s(teady), and the time of the event
};

const FlappingCase kCases[] = {
    {"FourInTenMinutesAreTold", {0, 100, 200, 599}, "c0 c100 c200 c599 "},
    {"TheFifthIsFlapping", {0, 1, 2, 3, 599}, "c0 c1 c2 c3 f599 s599 "},
    {"TheFifthAfterTenMinutesIsNot", {0, 1, 2, 3, 600}, "c0 c1 c2 c3 c600 "},
    {"FlappingForLongIsToldOnce", {0, 1, 2, 3, 4, 500, 1000, 1500, 2000}, "c0 c1 c2 c3 f4 s2000 "},
    {"OneThatWasSteadyIsToldAsBefore", {0, 1, 2, 3, 4, 604, 605}, "c0 c1 c2 c3 f4 s4 c604 c605 "},
};

class FlappingTest : public testing::TestWithParam<FlappingCase> {};

TEST_P(FlappingTest, IsToldOnceAndItsEndOnce) {
  Flapping flapping;
  std::string told;
  const auto tell = [&](const std::optional<Notice>& notice) {
    if (notice) told += "cfs"[static_cast<int>(notice->kind)] + std::to_string(notice->event.at) + ' ';
    return notice.has_value();
  };
  for (const std::int64_t at : GetParam().changes) {
    while (tell(flapping.TakeSteady(at))) continue;
    tell(flapping.Take({.cameraId = 1, .at = at}));
  }
  while (tell(flapping.TakeSteady(10'000))) continue;
  EXPECT_EQ(told, GetParam().told);
}

INSTANTIATE_TEST_SUITE_P(Row, FlappingTest, testing::ValuesIn(kCases), kByName);

TEST(NoticeLine, GoesOnWhereAProcessThatEndedWas) {
  const rig::TempFolder folder;
  Records records(folder.Path());
  CameraRecord camera;
  camera.name = "yard";
  camera.vendor = "User";
  camera.host = "192.0.2.1";
  for (camera.port = 554; camera.port < 556; ++camera.port) records.Add(camera, "");
  for (int i = 0; i < 9; ++i)
    records.NoteOutcome(1, {.cause = i % 2 == 0 ? Outcome::kOk : Outcome::kBusy, .at = 1000 + i});
  records.NoteOutcome(2, {.cause = Outcome::kBusy, .at = 1300});
  records.NoteOutcome(1, {.cause = Outcome::kBusy, .at = 2000});
  const auto told = [&](bool endsEachTime) {
    constexpr std::int64_t kNow = 5000;
    std::string text;
    NoticeLine line(records, {}, kNow);
    for (auto notice = line.Next(records, kNow); notice && text.size() < 99; notice = line.Next(records, kNow)) {
      text += "cfs"[static_cast<int>(notice->kind)] + std::to_string(notice->event.id) + ' ';
      if (endsEachTime) line = NoticeLine(records, line.Place(), kNow);
    }
    return text;
  };
  EXPECT_EQ(told(false), "c1 c2 c3 c4 f5 c10 s9 c11 ");
  EXPECT_EQ(told(true), told(false));
}

}  // namespace
}  // namespace recorder
