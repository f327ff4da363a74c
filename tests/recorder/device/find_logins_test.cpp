#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <list>

#include "recorder/device/asked/onvif/ask.h"
#include "recorder/device/find/find.h"
#include "recorder/device/model/model_files.h"
#include "recorder/request/request_scope.h"
#include "rig/temp_folder.h"
#include "tests/recorder/device/scripted_port.h"
#include "tests/recorder/rows.h"

// How often a login goes out while streams are found, and what is told of it. These cameras refuse in other ways than
// by saying so at once.

namespace recorder {
namespace {

using Login = FindLogin;

std::string File(const std::string& name) {
  std::ifstream stream(DATA_FOLDER "/onvif/" + name);
  return {std::istreambuf_iterator<char>(stream), {}};
}

constexpr char kDigest[] = R"(Digest realm="r", nonce="1")";
constexpr char kBasic[] = R"(Basic realm="r")";

bool IsRtsp(const Question& asked) { return asked.method == "DESCRIBE" || asked.method == "OPTIONS"; }

Script Rtsp(const Script& script) {
  return [script](const Question& asked) { return IsRtsp(asked) ? script(asked) : Answer{}; };
}

Script Web(const Script& script) {
  return [script](const Question& asked) { return IsRtsp(asked) ? Answer{} : script(asked); };
}

Answer NotAuthorized() { return {400, "", File("odd/notAuthorized.xml")}; }

/// Looks at the path before it wants a login, and refuses that.
const Script kPathFirst = Rtsp([](const Question& asked) {
  return asked.path == "/stream1" ? Answer{401, kDigest} : Answer{404};
});

/// Takes the login, and has none of the paths.
const Script kTakesLogin = Rtsp([](const Question& asked) {
  return asked.login.empty() ? Answer{401, kDigest} : Answer{404};
});

/// ONVIF that wants a token for all but its clock and services, and answers it with `refusal`.
Script Onvif(const Answer& refusal) {
  return Web([refusal](const Question& asked) -> Answer {
    if (asked.action == "GetSystemDateAndTime" || asked.action == "GetServices")
      return {200, "", File("media2/" + asked.action + ".xml")};
    if (asked.method == "GET") return {401, kDigest};
    return asked.login == "token" ? refusal : NotAuthorized();
  });
}

/// Wants Basic once it has asked for Digest.
const Script kBasicAfterDigest = Rtsp([](const Question& asked) {
  return Answer{asked.login.empty() ? 401 : 404, asked.number == 1 ? kDigest : kBasic};
});

/// Has other paths than that for whoever logs in, whatever the password.
const Script kPathBeforePassword = Rtsp([](const Question& asked) {
  const bool isElsewhere = !asked.login.empty() && asked.path != "/stream1";
  return isElsewhere ? Answer{404} : Answer{401, kDigest};
});

const Script kNeitherYesNorNo = Rtsp([](const Question& asked) {
  return asked.login.empty() ? Answer{401, kDigest} : Answer{500};
});

const Script kAllBehindToken = Web([](const Question&) { return NotAuthorized(); });
const Script kAllBehindDigest = Web([](const Question&) { return Answer{401, kDigest}; });

struct LoginCase {
  const char* name;
  std::list<Script> ports;
  Outcome outcome;
  Login login;
  int refused;  ///< logins
};

const LoginCase kCases[] = {
    {"OnvifCloses", {kPathFirst, Onvif({})}, Outcome::kLoginRefused, Login::kRefused, 1},
    {"OnvifIsBusy", {kPathFirst, Onvif({503})}, Outcome::kBusy, Login::kRefused, 1},
    {"ClockBehindALogin", {kPathFirst, kAllBehindToken}, Outcome::kClockUnknown, Login::kRefused, 1},
    {"BasicAfterDigest", {kBasicAfterDigest}, Outcome::kLoginRefused, Login::kRefused, 0},
    {"PathBeforeThePassword", {kPathBeforePassword}, Outcome::kLoginRefused, Login::kRefused, 1},
    {"NeitherYesNorNo", {kNeitherYesNorNo}, Outcome::kNotUnderstood, Login::kRefused, 1},
    {"WebAsOnvif", {kTakesLogin, Onvif(NotAuthorized())}, Outcome::kNoSuchStream, Login::kOnvifOthers, 1},
    {"WebAlone", {kTakesLogin, kAllBehindDigest}, Outcome::kNoSuchStream, Login::kAccepted, 1},
    {"SecondRtspPort", {kTakesLogin, kPathFirst}, Outcome::kNoSuchStream, Login::kAccepted, 1},
};

/// Whose paths are /stream1, /ch1/stream1 and /video.mjpg.
struct OneVendor : rig::TempFolder {
  OneVendor() {
    for (const char* file : {"schema.json", "simcam.json"}) {
      std::filesystem::copy_file(std::filesystem::path(MODELS_FOLDER) / file, Path() / file);
    }
  }
};

FindResult FindAt(std::list<ScriptedPort>& ports) {
  static const OneVendor models;
  SetModelFolders({models.Path()});
  FindRequest request{"127.0.0.1", "admin", "wrong", {}};
  for (const ScriptedPort& port : ports) request.ports.push_back(port.Number());
  return Find(request, nullptr);
}

class FindLoginTest : public testing::TestWithParam<LoginCase> {};

TEST_P(FindLoginTest, IsRefusedOnceAtMost) {
  std::list<ScriptedPort> ports;
  for (const Script& script : GetParam().ports) ports.emplace_back(script);
  const FindResult found = FindAt(ports);
  EXPECT_EQ(found.outcome, GetParam().outcome);
  EXPECT_EQ(found.login, GetParam().login);
  int refused = 0;
  for (const ScriptedPort& port : ports) {
    for (const Exchanged& one : port.Log()) {
      EXPECT_NE(one.asked.login, "Basic");
      refused += static_cast<int>(!one.asked.login.empty() && one.status != 404);
    }
  }
  EXPECT_EQ(refused, GetParam().refused);
}

INSTANTIATE_TEST_SUITE_P(Camera, FindLoginTest, testing::ValuesIn(kCases), kByName);

TEST(AskedLoginTest, IsNotSentAgainToAMediaServiceWhereAnotherClosedOverIt) {
  const ScriptedPort port(Onvif({}));
  const RequestScope scope{std::chrono::seconds(5)};
  CameraReport report;
  EXPECT_EQ(onvif::Ask({"127.0.0.1", port.Number(), "admin", "wrong"}, "", report), Outcome::kLoginRefused);
  EXPECT_EQ(std::ranges::count(port.Log(), "token", [](const Exchanged& one) { return one.asked.login; }), 1);
}

TEST(FindPortsTest, EachOpenPortIsAskedAtLeastOnce) {
  std::list<ScriptedPort> ports;
  for (int i = 0; i < 12; ++i) ports.emplace_back(kTakesLogin);
  const FindResult found = FindAt(ports);
  EXPECT_EQ(found.ports.size(), ports.size());
  EXPECT_EQ(std::ranges::count(found.warnings, FindWarning::kEnded), 1) << "not all was asked there";
}

TEST(FindProfilesTest, OneThatHasNoStreamLeavesTheOthers) {
  std::list<ScriptedPort> ports;
  int asked = 0;
  ports.emplace_back(Web([&](const Question& question) -> Answer {
    const bool isFirst = question.action == "GetStreamUri" && ++asked == 1;
    const std::string text = File(isFirst ? "odd/notSupported.xml" : "media1/" + question.action + ".xml");
    return text.empty() ? Answer{404} : Answer{isFirst ? 500 : 200, "", text};
  }));
  const FindResult found = FindAt(ports);
  ASSERT_FALSE(found.streams.empty());
  EXPECT_EQ(found.streams.front().from, kOnvifSays);
}

}  // namespace
}  // namespace recorder
