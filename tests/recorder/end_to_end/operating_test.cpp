// What whoever operates a recorder sees of it: ids and lines of the log, health, metrics.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <future>
#include <sstream>

#include "rig/cameras.h"
#include "rig/processes.h"
#include "tests/recorder/end_to_end/expect.h"
#include "tests/recorder/end_to_end/prometheus_text.h"

using namespace rig;
using testing::ContainsRegex;

namespace {

struct IdCase {
  const char* name;
  const char* path;  ///< behind the API's prefix, or whole when it starts with a slash
  Headers headers;
  const char* id;  // regular expressions
  std::string line;
};

const char kNewId[] = "^[0-9a-f]{16}$";
const std::string kWorked = R"( request: method="CamCap" status=200 user="tester" ms=[0-9]+)";
const Headers kGuest = LoginOf("guest", "wrong");

Headers Forwarded(const char* id) { return {{"X-Request-Id", id}, {"X-Forwarded-For", "203.0.113.9"}}; }

const IdCase kIdCases[] = {
    {"OfACamera",
     "CameraTest",
     {},
     kNewId,
     R"( request: method="CameraTest" status=200 user="tester" cause="unknownModel" ms=)"},
    {"OfAnAddressOfItsOwn",
     "/recorder/1/models?vendor=hidden",
     {},
     kNewId,
     R"( request: method="GET /recorder/1/models" status=200 user="tester" ms=)"},
    {"OfLogins", "/recorder/1/session", {}, kNewId, R"( request: method="GET /recorder/1/session" status=200 user)"},
    {"OfAWrongPassword", "CamCap", kGuest, kNewId, " recorder/login/login_check:[0-9]+ Refuse: Login of "},
    {"OfARefusal", "CamCap", kGuest, kNewId, " request: method=\"CamCap\" status=4"},
    {"OfAProxy", "CamCap", Forwarded("trace-1.A_b"), "^trace-1.A_b$", kWorked},
    {"BadOfAProxy", "CamCap", Forwarded("trace 1"), kNewId, kWorked},
    {"NotOfAProxy", "CamCap", {{"X-Request-Id", "trace-2"}}, kNewId, kWorked},
};

}  // namespace

TEST(Operating, AnAnswerCarriesTheIdOfItsLinesInTheLog) {
  const TestRecorder recorder({.proxies = {"127.0.0.1"}});
  for (const IdCase& row : kIdCases) {
    SCOPED_TRACE(row.name);
    Headers headers = row.headers;
    headers.merge(recorder.Login());
    const bool isPost = row.path == std::string("CameraTest");
    const std::string path = row.path[0] == '/' ? row.path : std::string(kApi) + row.path;
    const Answer answer = recorder.Send(isPost ? "POST" : "GET", path, headers, isPost ? "{}" : "");
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

TEST(Operating, StrangersLearnWhetherItIsAliveAndReadyAndNothingElse) {
  const TempFolder models;
  std::filesystem::copy(SOURCE_FOLDER "/models", models.Path());
  const SimCameras cameras(List({Faulty("silent", "silentAfterConnect")}));
  const TestRecorder recorder({.testMs = 2000, .workers = 1, .modelsFolder = models.Path()});
  const auto reasons = [&] {
    const Answer answer = recorder.Send("GET", "/readyz", {{"Host", "any.example"}});
    EXPECT_EQ(answer.status, answer.json["success"].asBool() ? 200 : 503);
    EXPECT_THAT(answer.body, testing::Not(testing::HasSubstr(recorder.StateFolder().parent_path().string())));
    return answer.status == 200 ? answer.json["data"] : answer.json["error"]["reasons"];
  };
  EXPECT_EQ(recorder.Send("GET", "/healthz", {}).status, 200);
  EXPECT_EQ(recorder.Send("GET", "/healthz", LoginOf("nobody", "x")).status, 200);
  EXPECT_EQ(recorder.Control({"health"}).status, 0);
  for (const char* name : {"module", "records", "models", "workers"}) EXPECT_EQ(reasons()[name], "ok") << name;

  auto test = std::async(std::launch::async,
                         [&] { return CodeOf(recorder, "CameraTest", CameraParams(cameras.Port("silent"), "")); });
  while (cameras.Log("silent")["connections"].asInt() == 0) usleep(10'000);
  EXPECT_EQ(reasons()["workers"], "all workers are busy");
  EXPECT_EQ(test.get(), 463);
  while (reasons()["workers"] != "ok") usleep(10'000);  // the answer is there a moment before the worker is free

  std::filesystem::remove_all(models.Path());
  std::filesystem::remove(recorder.StateFolder() / "secret.key");
  EXPECT_EQ(reasons()["models"], "no model file can be read");
  EXPECT_EQ(reasons()["records"], "the records are not there");
  EXPECT_EQ(recorder.Send("GET", "/healthz", {}).status, 200) << "a restart would mend nothing";
}

namespace {

/// What a service manager hears of a recorder, until it has heard two messages or the log says a failure.
std::string HeardByWatchdog(const std::vector<std::string>& serveArguments, int strangers = 0) {
  const TempFolder folder;
  const std::string name = (folder.Path() / "notify").string();
  const recorder::FileDescriptor manager(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  name.copy(address.sun_path, sizeof(address.sun_path) - 1);
  EXPECT_EQ(bind(manager.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
  setenv("NOTIFY_SOCKET", name.c_str(), 1);
  setenv("WATCHDOG_USEC", "300000", 1);
  const TestRecorder recorder({.serveArguments = serveArguments});
  unsetenv("NOTIFY_SOCKET");
  unsetenv("WATCHDOG_USEC");
  std::vector<Connection> held;  // that say a word and then hold their place
  for (int i = 0; i < strangers; ++i) held.emplace_back(recorder.Port(), std::chrono::seconds(60)).Send("GET");
  if (strangers > 0) usleep(500'000);  // all have their place
  for (char text[64]; recv(manager.Get(), text, sizeof(text), 0) > 0;) continue;
  std::string heard;
  for (int messages = 0; messages < 2 && recorder.Log().find("not answer") == std::string::npos; usleep(10'000)) {
    char text[64];
    const ssize_t size = recv(manager.Get(), text, sizeof(text), 0);
    if (size > 0) heard.append(text, static_cast<std::size_t>(size)) += ' ';
    messages += size > 0 ? 1 : 0;
  }
  return heard;
}

}  // namespace

TEST(Operating, TheServiceManagerHearsOfItAsLongAsItAnswers) {
  EXPECT_EQ(HeardByWatchdog({}), "WATCHDOG=1 WATCHDOG=1 ");
  EXPECT_EQ(HeardByWatchdog({}, 300), "WATCHDOG=1 WATCHDOG=1 ") << "though strangers keep all others out";
  EXPECT_EQ(HeardByWatchdog({"--worker", "/bin/false"}), "");
}

TEST(Operating, MetricsAreForThisMachineAndForWhoeverLogsIn) {
  const TestRecorder recorder;
  const std::string token = recorder.Control({"token", "add", "prometheus"}).output;
  const Headers bearer = {{"Authorization", "Bearer " + token.substr(0, token.find('\n'))}, {"Via", "1.1 proxy"}};
  const std::pair<Headers, int> rows[] = {{{}, 200},
                                          {{{"X-Forwarded-For", "127.0.0.1"}}, 401},
                                          {{{"Via", "1.1 proxy"}}, 401},
                                          {{{"Host", "192.0.2.1"}}, 401},
                                          {{{"Host", "any.example"}}, 403},
                                          {bearer, 200},
                                          {recorder.Login(), 200}};
  for (const auto& [headers, status] : rows) {
    EXPECT_EQ(recorder.Send("GET", "/metrics", headers).status, status) << testing::PrintToString(headers);
  }
}

TEST(Operating, MetricsAreForNobodyWithoutALoginBehindAProxy) {
  EXPECT_EQ(TestRecorder({.proxies = {"192.0.2.1"}}).Send("GET", "/metrics", {}).status, 401);
}

TEST(Operating, MetricsTellWhatHappened) {
  const SimCameras cameras(List({Camera("camera")}));
  const TestRecorder recorder({.workers = 3, .watchSeconds = 3600});
  while (Descendants(getpid(), "recorder-watch").empty()) usleep(10'000);
  KillWatch();
  recorder.AddCamera("User", "", 1, "admin", kSecret, "1", "/");
  recorder.AddCamera("User", "", 2, "admin", kSecret, "1", "/");
  EXPECT_EQ(recorder.Control({"camera", "status", "2", "disabled"}).status, 0);
  recorder.Send("POST", "/recorder/1/cameras/1/test", recorder.Login());
  for (const char* path : {"session", "users", "cameras"}) {
    recorder.Send("GET", std::string("/recorder/1/") + path, {{"Authorization", "Bearer wrong"}});
    recorder.Send("GET", std::string("/recorder/1/") + path, {});
  }
  recorder.AddCamera("Simcam", "RTSP-H264", cameras.Port("camera"), "admin", kSecret);
  const Answer picture = recorder.Send("GET", "/recorder/1/cameras/3/picture", recorder.Login());
  EXPECT_EQ(picture.status, 200) << picture.body;
  EXPECT_EQ(CodeOf(recorder, "GetSnapshot", CameraParams(cameras.Port("camera"), kSecret)), 0);
  recorder.Send("GET", kApi + std::string("CamCap"), kGuest);

  const auto samples = PrometheusText(recorder.Send("GET", "/metrics", {}).body).Samples();
  const std::pair<const char*, double> wanted[] = {
      {R"(recorder_cameras{state="down",cause="unreachable"})", 1},
      {R"(recorder_cameras{state="off",cause=""})", 1},
      {R"(recorder_cameras{state="up",cause=""})", 1},
      {R"(recorder_requests_total{method="GetSnapshot",status="2xx"})", 1},
      {R"(recorder_requests_total{method="recorder",status="5xx"})", 1},
      {R"(recorder_requests_total{method="other",status="4xx"})", 1},
      {R"(recorder_workers{pool="cameras",state="free"})", 3},
      {R"(recorder_workers{pool="lists",state="busy"})", 1},
      {"recorder_request_duration_seconds_count", 9},
      {"recorder_key_frame_wait_seconds_count", 2},
      {"recorder_logins_refused_total", 4},
      {R"(recorder_processes_ended_total{program="recorder-webapi"})", 0},
      {R"(recorder_processes_ended_total{program="recorder-watch"})", 1},
  };
  for (const auto& [name, value] : wanted) EXPECT_EQ(samples.contains(name) ? samples.at(name) : -1, value) << name;
  EXPECT_GT(samples.at("recorder_memory_bytes"), 1e6);
  const auto isOther = [](const auto& sample) { return sample.first.find("_duration_seconds_") == std::string::npos; };
  EXPECT_LE(std::ranges::count_if(samples, isOther), 40);
}
