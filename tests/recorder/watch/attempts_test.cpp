#include "recorder/records/attempts.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "recorder/utility/files.h"
#include "rig/temp_folder.h"

namespace recorder {
namespace {

TEST(Attempts, AreThereForTheNextProcessAndForNobodyElse) {
  const rig::TempFolder folder;
  EXPECT_TRUE(Attempts::Read(folder.Path()).empty());
  const Attempt begun{.revision = 3, .at = 1'700'000'000};
  const Attempt ended{2, 1'700'000'000, true, 1'700'000'009, std::chrono::milliseconds(8700), Outcome::kLoginRefused,
                      7};
  Attempts(folder.Path()).Write(7000, begun);
  Attempts(folder.Path()).Write(1, ended);
  EXPECT_EQ(Attempts::Read(folder.Path()), (std::map<int, Attempt>{{1, ended}, {7000, begun}}));
  EXPECT_EQ(Attempts::Of(folder.Path(), 7000), begun);
  EXPECT_FALSE(Attempts::Of(folder.Path(), 2) || Attempts::Of(folder.Path(), 7001));
  Attempts(folder.Path()).Write(600'000, ended);  // whose place is 37 MiB away
  EXPECT_EQ(Attempts::Read(folder.Path()).rbegin()->second, ended);
  EXPECT_EQ(Attempts::Of(folder.Path(), 600'000), ended);
  struct stat status {};
  ASSERT_EQ(stat((folder.Path() / "watch.attempts").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST(Attempts, TellWhenTheFirstIsDueAsLongAsTheirWriterIsTheSame) {
  const rig::TempFolder folder;
  EXPECT_EQ(Attempts::FirstDue(folder.Path()), 0);
  Attempts(folder.Path()).TellFirstDue(7);
  EXPECT_EQ(Attempts::FirstDue(folder.Path()), 7);
  EXPECT_TRUE(Attempts::Read(folder.Path()).empty());
  const Attempts next(folder.Path());
  EXPECT_EQ(Attempts::FirstDue(folder.Path()), 0);
}

TEST(Attempts, OfAnotherKindCountAsNone) {
  const rig::TempFolder folder;
  for (const std::string content : {"", "watch.attempts 2, by something\n"}) {
    ReplaceFile(folder.Path() / "watch.attempts", content);
    EXPECT_TRUE(Attempts::Read(folder.Path()).empty());
    Attempts(folder.Path()).Write(2, {.at = 5});
    EXPECT_EQ(Attempts::Read(folder.Path()).size(), 1U);
  }
}

}  // namespace
}  // namespace recorder
