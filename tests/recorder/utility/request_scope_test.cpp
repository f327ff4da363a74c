#include "recorder/utility/request_scope.h"

#include <gtest/gtest.h>

#include <thread>

namespace recorder {
namespace {

using std::chrono::milliseconds;

TEST(RequestScopeTest, ALentPasswordGoesToItsOwnCameraOnly) {
  RequestScope scope{milliseconds(1000)};
  scope.LendPassword("secret", "cam.example", 80);
  scope.LendPassword("other", "192.0.2.7", 80);
  scope.LendPassword("both", "Cam.Example", 80);
  scope.LendPassword("both", "192.0.2.7", 80);
  scope.LendPassword("", "192.0.2.8", 80);
  scope.AllowPort("cam.example", 8554);
  scope.AllowPort("evil.example", 80);
  const auto isRefused = [&scope](const char* host, int port, const char* password) {
    return scope.Refusal(host, port, "admin", password) == Outcome::kLoginRefused;
  };
  EXPECT_FALSE(isRefused("CAM.example.", 80, "secret")) << "its own address";
  EXPECT_FALSE(isRefused("cam.example", 8554, "secret")) << "a port that the camera named";
  EXPECT_TRUE(isRefused("cam.example", 554, "secret")) << "another port";
  EXPECT_TRUE(isRefused("evil.example", 80, "secret")) << "another host";
  EXPECT_TRUE(isRefused("cam.example.evil.example", 80, "secret")) << "a host that begins alike";
  EXPECT_TRUE(isRefused("192.0.2.7", 80, "secret")) << "another camera with a lent password";
  EXPECT_TRUE(isRefused("192.0.2.7", 8554, "other")) << "a port that another camera named";
  EXPECT_FALSE(isRefused("cam.example", 80, "both")) << "the first of two cameras with one password";
  EXPECT_FALSE(isRefused("192.0.2.7", 80, "both")) << "the second of them";
  EXPECT_TRUE(isRefused("evil.example", 80, "both")) << "neither of them";
  EXPECT_FALSE(isRefused("evil.example", 80, "secret2")) << "the caller's own password";
  EXPECT_FALSE(isRefused("evil.example", 80, "")) << "no password";
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

}  // namespace
}  // namespace recorder
