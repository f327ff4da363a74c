#include <gtest/gtest.h>

#include "rig/cameras.h"

using namespace rig;

// tests/data/state/ is what version 0.1.0 wrote: a user, a camera at port 8554 of 127.0.0.1, the key of a trusted
// client. Keep it as it is.
TEST(Upgrading, KeepsUsersCamerasAndKeys) {
  if (!EnterOwnNetwork()) GTEST_SKIP() << "this user may have no network of his own";
  const Json::Value port = ParseJson(R"({"port": 8554})");
  const SimCameras cameras(List({Camera("front door", port)}));
  const TestRecorder recorder({.prepare = [](const TestRecorder& made) {
    std::filesystem::copy(SOURCE_FOLDER "/tests/data/state", made.StateFolder());
  }});
  Json::Value params = CameraParams(8554, kFakePass);
  params["camId"] = 1;
  const Headers login = LoginOf("admin", "login of before");
  const Answer test = recorder.Send("POST", std::string(kApi) + "CameraTest", login, ToText(params));
  EXPECT_EQ(test.Code(), 0) << test.body << recorder.Log();

  const TestRecorder::Pair pair = recorder.MakePair({"north"});
  Json::Value proof;
  proof["vendor"] = "User";
  proof["client"] = "NVR";
  proof["cookie"] = pair.cookie;
  const Headers time = {{"Cookie", "timestamp=" + pair.timestamp}};
  EXPECT_EQ(recorder.Send("POST", std::string(kTrusted) + "CamCap", time, ToText(proof)).Code(), 0);
}
