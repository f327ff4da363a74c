#include "recorder/utility/request_scope.h"

#include <gtest/gtest.h>

#include <thread>

namespace recorder {
namespace {

using std::chrono::milliseconds;

struct LentCase {
  const char* name;
  const char* host;
  const char* password;
  int port;
  bool refused;
};

// Lent: "secret" to cam.example:80 (8554 named by the camera), "other" to 192.0.2.7:80, "both" to the two of them.
const LentCase kLentCases[] = {
    {"OwnAddress", "cam.example", "secret", 80, false},
    {"OwnHostInOtherCase", "CAM.example.", "secret", 80, false},
    {"AllowedPort", "cam.example", "secret", 8554, false},
    {"OtherPort", "cam.example", "secret", 554, true},
    {"OtherHost", "evil.example", "secret", 80, true},
    {"HostThatOnlyBeginsAlike", "cam.example.evil.example", "secret", 80, true},
    {"AnotherLentCamera", "192.0.2.7", "secret", 80, true},
    {"PortAllowedForAnotherCamera", "192.0.2.7", "other", 8554, true},
    {"SamePasswordFirstCamera", "cam.example", "both", 80, false},
    {"SamePasswordSecondCamera", "192.0.2.7", "both", 80, false},
    {"SamePasswordElsewhere", "evil.example", "both", 80, true},
    {"CallersOwnPassword", "evil.example", "secret2", 80, false},
    {"NoPassword", "evil.example", "", 80, false},
};

class LentPasswordTest : public testing::TestWithParam<LentCase> {};

TEST_P(LentPasswordTest, GoesToItsOwnCameraOnly) {
  RequestScope scope{milliseconds(1000)};
  scope.LendPassword("secret", "cam.example", 80);
  scope.LendPassword("other", "192.0.2.7", 80);
  scope.LendPassword("both", "Cam.Example", 80);
  scope.LendPassword("both", "192.0.2.7", 80);
  scope.LendPassword("", "192.0.2.8", 80);
  scope.AllowPort("cam.example", 8554);
  scope.AllowPort("evil.example", 80);
  const auto refusal = scope.Refusal(GetParam().host, GetParam().port, "admin", GetParam().password);
  EXPECT_EQ(refusal, GetParam().refused ? std::optional(Outcome::kLoginRefused) : std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Address, LentPasswordTest, testing::ValuesIn(kLentCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(RequestScopeTest, GivesAFailureAgainOnlyWhereItHappened) {
  RequestScope scope{milliseconds(10'000)};
  scope.Remember("cam1", "admin", Outcome::kLoginRefused);
  scope.Remember("cam2", "admin", Outcome::kTimedOut);
  scope.Remember("cam3", "admin", Outcome::kBusy);
  EXPECT_EQ(scope.Refusal("CAM1", 554, "admin", "x"), Outcome::kLoginRefused);
  EXPECT_EQ(scope.Refusal("cam2", 554, "admin", "x"), Outcome::kTimedOut);
  EXPECT_EQ(scope.Refusal("cam1", 80, "guest", "x"), std::nullopt);
  EXPECT_EQ(scope.Refusal("cam3", 80, "admin", "x"), std::nullopt);
}

TEST(RequestScopeTest, ASpentDeadlineAnswersForEveryHost) {
  RequestScope scope{milliseconds(20)};
  std::this_thread::sleep_for(milliseconds(30));
  EXPECT_EQ(scope.Refusal("cam1", 80, "", ""), std::nullopt) << "the clock starts with the first contact";
  const auto deadline = scope.Deadline();
  std::this_thread::sleep_until(deadline);
  EXPECT_EQ(scope.Deadline(), deadline);
  EXPECT_EQ(scope.Refusal("cam2", 80, "", ""), Outcome::kTimedOut);
}

TEST(RequestScopeTest, EachThreadAndEachNestedRequestHasItsOwn) {
  RequestScope outer{milliseconds(1000)};
  outer.Remember("cam1", "admin", Outcome::kLoginRefused);
  std::thread([] {
    EXPECT_EQ(RequestScope::Current().Refusal("cam1", 80, "admin", ""), std::nullopt);
    RequestScope::Current().Remember("cam1", "admin", Outcome::kTimedOut);
    EXPECT_EQ(RequestScope::Current().Refusal("cam1", 80, "admin", ""), Outcome::kTimedOut);
  }).join();
  {
    const RequestScope inner{milliseconds(1000)};
    EXPECT_EQ(&RequestScope::Current(), &inner);
  }
  EXPECT_EQ(&RequestScope::Current(), &outer);
  EXPECT_EQ(outer.Refusal("cam1", 80, "admin", ""), Outcome::kLoginRefused);
}

}  // namespace
}  // namespace recorder
