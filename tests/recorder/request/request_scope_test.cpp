#include "recorder/request/request_scope.h"

#include <gtest/gtest.h>

#include <thread>

namespace recorder {
namespace {

using std::chrono::milliseconds;

TEST(RequestScopeTest, ATokenIsWorthNothingElsewhere) {
  const CameraRecord record{1, "door", "Acme", "X", "cam.example", 80, "admin", "", ""};
  RequestScope scope{milliseconds(1000)};
  const std::string token = scope.Lend({{record}, ""});
  EXPECT_NE(scope.Lend({{record}, ""}), token);
  const auto isRefused = [&](const char* host, int port, const char* user) {
    return scope.Refusal(host, port, user, token) == Outcome::kLoginRefused;
  };
  EXPECT_TRUE(isRefused("cam.example", 80, "admin")) << "nobody has said what for";
  scope.FindLent(token)->LendFor({"Acme", "X", "cam.example", 80, "admin", "", ""});
  EXPECT_FALSE(isRefused("CAM.example.", 80, "admin")) << "its own address";
  EXPECT_TRUE(isRefused("cam.example", 554, "admin")) << "another port";
  EXPECT_TRUE(isRefused("cam.example.evil.example", 80, "admin")) << "a host that begins alike";
  EXPECT_TRUE(isRefused("cam.example", 80, "root")) << "another user";
  scope.AllowPort("evil.example", 81);
  scope.AllowPort("cam.example", 8554);
  EXPECT_FALSE(isRefused("cam.example", 8554, "admin")) << "a port that the camera named";
  EXPECT_TRUE(isRefused("cam.example", 81, "admin")) << "a port that another host named";
  {
    const RequestScope other{milliseconds(1000)};
    EXPECT_EQ(other.Refusal("cam.example", 80, "admin", token), Outcome::kLoginRefused) << "another request";
  }
  EXPECT_EQ(scope.Refusal("evil.example", 80, "admin", "typed"), std::nullopt);
  scope.FindLent(token)->LendFor({"Acme", "X", "cam.example", 81, "admin", "", ""});
  EXPECT_TRUE(isRefused("cam.example", 80, "admin")) << "it was asked for another camera since";
}

TEST(RequestScopeTest, APartLeavesTheReportsToItsRequest) {
  const RequestScope scope{milliseconds(1000)};
  { const RequestScope part(milliseconds(1000), RequestScope::OfPart{}); }
  std::thread([] { RequestScope::Current().SetCause(Outcome::kBusy); }).join();
  EXPECT_EQ(scope.Reports().size(), 1U);
}

TEST(RequestScopeTest, GivesAFailureAgainOnlyWhereItHappened) {
  RequestScope scope{milliseconds(10'000)};
  scope.Remember("cam1", "admin", Outcome::kLoginRefused);
  scope.Remember("cam2", "admin", Outcome::kTimedOut);
  scope.Remember("cam3", "admin", Outcome::kBusy);
  EXPECT_EQ(scope.Refusal("CAM1", 554, "admin", "x"), Outcome::kLoginRefused);
  EXPECT_EQ(scope.Refusal("cam2", 554, "admin", "x"), Outcome::kTimedOut);
  EXPECT_EQ(scope.Refusal("cam1", 80, "guest", "x"), std::nullopt);
  EXPECT_EQ(scope.Refusal("cam3", 80, "admin", "x"), std::nullopt);
  std::thread([] { EXPECT_FALSE(RequestScope::Current().Refusal("cam1", 80, "admin", "")); }).join();
  const StreamPlace stream{"cam3", 554, "/"};
  scope.RememberKeyFrameCall(stream, [&](const std::string&, const std::string&, Clock::time_point) {
    scope.Remember("cam3", "admin", Outcome::kLoginRefused);
    return false;
  });
  scope.CallForKeyFrame(stream, "admin", "x", scope.Deadline());
  EXPECT_EQ(scope.Refusal("cam3", 80, "admin", "x"), std::nullopt) << "the stream goes on";
  { const RequestScope inner{milliseconds(1000)}; }
  EXPECT_EQ(&RequestScope::Current(), &scope);
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

TEST(RequestScopeTest, AShareOfTheTimeIsOverForItselfAlone) {
  RequestScope scope{milliseconds(10'000)};
  const auto deadline = scope.Deadline();
  {
    const HalfTime half;
    EXPECT_LT(scope.Deadline(), deadline);
    scope.Remember("cam1", "admin", Outcome::kTimedOut);
    scope.Remember("cam2", "admin", Outcome::kLoginRefused);
  }
  EXPECT_EQ(scope.Deadline(), deadline);
  EXPECT_EQ(scope.Refusal("cam1", 80, "admin", ""), std::nullopt);
  EXPECT_EQ(scope.Refusal("cam2", 80, "admin", ""), Outcome::kLoginRefused);
}

}  // namespace
}  // namespace recorder
