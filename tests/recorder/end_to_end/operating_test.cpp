// What whoever operates a recorder sees of it: ids and lines of the log, health, metrics.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "rig/cameras.h"
#include "tests/recorder/end_to_end/expect.h"

using namespace rig;
using testing::ContainsRegex;

namespace {

const std::string kGuest = LoginOf("guest", "wrong").begin()->second;

struct IdCase {
  const char* name;
  const char* verb;
  std::string path;
  Headers headers;  // "Authorization": "" for none
  const char* id;   // regular expressions
  std::string line;
};

const char kNewId[] = "^[0-9a-f]{16}$";
const std::string kWorked = R"( request: method="CamCap" status=200 user="tester" ms=[0-9]+)";

const IdCase kIdCases[] = {
    {"OfACamera",
     "POST",
     std::string(kApi) + "CameraTest",
     {},
     kNewId,
     R"( request: method="CameraTest" status=200 user="tester" cause="unknownModel" ms=)"},
    {"OfAnAddressOfItsOwn",
     "GET",
     "/recorder/1/models?vendor=hidden",
     {},
     kNewId,
     R"( request: method="GET /recorder/1/models" status=200 user="tester" ms=)"},
    {"OfLogins",
     "GET",
     "/recorder/1/session",
     {},
     kNewId,
     R"( request: method="GET /recorder/1/session" status=200 user)"},
    {"OfAWrongPassword",
     "GET",
     std::string(kApi) + "CamCap",
     {{"Authorization", kGuest}},
     kNewId,
     " recorder/login/login_check:[0-9]+ Refuse: Login of "},
    {"OfARefusal",
     "GET",
     std::string(kApi) + "CamCap",
     {{"Authorization", kGuest}},
     kNewId,
     " request: method=\"CamCap\" status=4"},
    {"OfAProxy",
     "GET",
     std::string(kApi) + "CamCap",
     {{"X-Request-Id", "trace-1.A_b"}, {"X-Forwarded-For", "203.0.113.9"}},
     "^trace-1.A_b$",
     kWorked},
    {"BadOfAProxy",
     "GET",
     std::string(kApi) + "CamCap",
     {{"X-Request-Id", "trace 1"}, {"X-Forwarded-For", "203.0.113.9"}},
     kNewId,
     kWorked},
    {"NotOfAProxy", "GET", std::string(kApi) + "CamCap", {{"X-Request-Id", "trace-2"}}, kNewId, kWorked},
};

}  // namespace

TEST(Operating, AnAnswerCarriesTheIdOfItsLinesInTheLog) {
  const TestRecorder recorder({.proxies = {"127.0.0.1"}});
  for (const IdCase& row : kIdCases) {
    SCOPED_TRACE(row.name);
    Headers headers = row.headers;
    headers.merge(recorder.Login());
    const Answer answer = recorder.Send(row.verb, row.path, headers, row.verb == std::string("POST") ? "{}" : "");
    const std::string id = HeaderOf(answer.head, "X-Request-Id");
    EXPECT_THAT(id, ContainsRegex(row.id));
    EXPECT_THAT(recorder.Log(), ContainsRegex(' ' + id + row.line));
  }
  EXPECT_THAT(recorder.Log(), testing::Not(testing::HasSubstr("hidden")));
}

TEST(Operating, TheLogSaysWhereTheTimeOfAPictureWent) {
  const SimCameras cameras(List({Camera("camera")}));
  const TestRecorder recorder({.log = "json"});
  EXPECT_EQ(CodeOf(recorder, "GetSnapshot", CameraParams(cameras.Port("camera"), kSecret)), 0);
  Json::Value line;
  std::istringstream log(recorder.Log());
  for (std::string text; std::getline(log, text);) {
    if (text.find("GetSnapshot") != std::string::npos) line = ParseJson(text);
  }
  EXPECT_EQ(line["cause"], "ok") << recorder.Log();
  for (const char* rung : {"connect", "describe", "login", "keyFrame", "decode"})
    EXPECT_TRUE(line[rung].isInt()) << rung;
}
