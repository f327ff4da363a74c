#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <ctime>
#include <future>
#include <sstream>

#include "rig/cameras.h"

using namespace rig;

namespace {

const std::string kTrustedCamCap = kTrusted + std::string("CamCap");

using Pair = TestRecorder::Pair;

/// The pair of `key` at a time `offset` seconds from now, made as docs/api.md says and not with our code.
Pair Sign(const std::string& key, int offset) {
  const std::string timestamp = std::to_string(std::time(nullptr) + offset);
  const Finished signing =
      Run("/usr/bin/openssl", {"dgst", "-sha512", "-mac", "HMAC", "-macopt", "hexkey:" + key, "-r"}, timestamp);
  return {signing.output.substr(0, 64), timestamp};
}

constexpr int kLargestBody = 64 << 10;  // bytes, as docs/api.md says
constexpr int kLargestListBody = 1 << 20;

/// The half of a pair that anybody can make.
Headers::value_type TimeCookie(int offset = 0) {
  return {"Cookie", "other=1; timestamp=" + std::to_string(std::time(nullptr) + offset)};
}

/// What comes for a POST of which the head alone is sent, with a body of `size` bytes to follow; "" when nothing comes.
std::string AnswerToHead(const TestRecorder& recorder, const std::string& path, const Headers& headers, int size) {
  const Connection connection(recorder.Port(), std::chrono::seconds(60));
  Headers all = headers;
  all.emplace("Content-Length", std::to_string(size));
  connection.Send(HttpRequest("POST", path, all));
  std::string answer;
  connection.Receive(answer);
  return answer;
}

Answer Ask(const TestRecorder& recorder, const Pair& pair, const std::string& client, int isCrossSite = 0) {
  Json::Value params;
  params["vendor"] = "User";
  params["client"] = client;
  params["cookie"] = pair.cookie;
  params["isCrossSite"] = isCrossSite;
  return recorder.Send("POST", kTrustedCamCap, {{"Cookie", "timestamp=" + pair.timestamp}}, ToText(params));
}

}  // namespace

TEST(TrustedRecorders, AreAdmittedByTheirPairAlone) {
  const TestRecorder recorder;
  const std::string key = recorder.Trust({"north"}).substr(0, 64);
  recorder.Trust({"north", "--group"});
  EXPECT_EQ(recorder.Control({"trust", "add", "north"}).status, 1) << "keys of one kind have different names";
  const Pair client = recorder.MakePair({"north"});
  const Pair group = recorder.MakePair({"north", "--group"});

  EXPECT_EQ(Ask(recorder, client, "NVR").Code(), 0);
  EXPECT_EQ(Ask(recorder, group, "NVR", 1).Code(), 0);
  EXPECT_EQ(Ask(recorder, client, "NVR", 1).Code(), 105) << "a client is no server of the group";
  EXPECT_EQ(Ask(recorder, group, "NVR").Code(), 105);
  EXPECT_EQ(Ask(recorder, client, "nvr").Code(), 105);
  EXPECT_EQ(Ask(recorder, Sign(key, -290), "NVR").Code(), 0);
  EXPECT_EQ(Ask(recorder, Sign(key, -301), "NVR").Code(), 105) << "too old";
  EXPECT_EQ(Ask(recorder, Sign(key, 60), "NVR").Code(), 105) << "from the future";
  EXPECT_EQ(recorder.Send("POST", kTrustedCamCap, {TimeCookie()}, "{}").Code(), 105) << "neither login nor pair";
  Pair changed = client;
  changed.cookie.back() = changed.cookie.back() == '0' ? '1' : '0';
  const Pair later = {client.cookie, std::to_string(std::stoll(client.timestamp) + 1)};
  const Pair longer = {client.cookie + "0", client.timestamp};
  for (const Pair& pair : {changed, later, longer, {"", client.timestamp}, Sign(std::string(64, 'c'), 0)}) {
    EXPECT_EQ(Ask(recorder, pair, "NVR").Code(), 105) << pair.cookie;
  }
  EXPECT_EQ(Ask(recorder, client, "NVR").Code(), 0) << "a pair may be used again within its five minutes";
  EXPECT_EQ(
      recorder.Send("POST", kTrustedCamCap, {*recorder.Login().begin(), TimeCookie()}, R"({"vendor": "User"})").Code(),
      105)
      << "a login does not count there";
  EXPECT_EQ(recorder.Send("GET", kTrustedCamCap + "?vendor=User", {TimeCookie()}).status, 405);

  ASSERT_EQ(recorder.Control({"trust", "remove", "north"}).status, 0);
  EXPECT_EQ(Ask(recorder, client, "NVR").Code(), 105);
}

TEST(TrustedRecorders, HaveNoAddressUntilThereIsAKey) {
  const TestRecorder recorder;
  for (const Headers& headers : {Headers{}, Headers{TimeCookie()}}) {
    EXPECT_EQ(recorder.Send("POST", kTrustedCamCap, headers, "{}").status, 404);
    EXPECT_THAT(AnswerToHead(recorder, kTrustedCamCap, headers, 1'000), testing::HasSubstr("HTTP/1.1 404 "));
  }
  recorder.Trust({"north"});
  EXPECT_EQ(Ask(recorder, recorder.MakePair({"north"}), "NVR").Code(), 0);
  ASSERT_EQ(recorder.Control({"trust", "remove", "north"}).status, 0);
  const auto status = [&] { return recorder.Send("POST", kTrustedCamCap, {TimeCookie()}, "{}").status; };
  for (int tries = 0; tries < 1000 && status() != 404; ++tries) usleep(10'000);
  EXPECT_EQ(status(), 404);
}

TEST(TrustedRecorders, AreRefusedBeforeTheirBodyCostsAnything) {
  const std::string kList = kTrusted + std::string("CamBatAddVerify");
  const TestRecorder recorder;
  recorder.Trust({"north"});
  const struct {
    std::string path;
    Headers headers;
    int size;  ///< of the body, which is not sent
    const char* answer;
  } kHeads[] = {
      {kTrustedCamCap, {}, 1, "HTTP/1.1 403 "},
      {kTrustedCamCap, {{"Cookie", "time=1; timestamp="}}, 1, "HTTP/1.1 403 "},
      {kTrustedCamCap, {TimeCookie()}, kLargestBody + 1, "HTTP/1.1 413 "},
      {kList, {TimeCookie()}, kLargestListBody + 1, "HTTP/1.1 413 "},
      {kApi + std::string("CameraTest"), recorder.Login(), kLargestBody + 1, "HTTP/1.1 413 "},
  };
  for (const auto& [path, headers, size, answer] : kHeads) {
    EXPECT_THAT(AnswerToHead(recorder, path, headers, size), testing::HasSubstr(answer)) << path << size;
  }
  const std::string blanks(kLargestBody, ' ');
  EXPECT_EQ(recorder.Send("POST", kTrustedCamCap, {TimeCookie()}, blanks).status, 400) << "just small enough";
  EXPECT_EQ(recorder.Send("POST", kList, {TimeCookie()}, std::string(kLargestListBody, ' ')).status, 400);
  for (const int offset : {-301, 60}) {
    EXPECT_EQ(recorder.Send("POST", kTrustedCamCap, {TimeCookie(offset)}, "no JSON").Code(), 105) << "not looked at";
  }
}

TEST(Pools, SilentCamerasKeepNobodyFromTheLists) {
  const SimCameras cameras(List({Faulty("silent", "silentAfterConnect")}));
  const TestRecorder recorder({.testMs = 4000, .pictureMs = 4000, .workers = 1});
  auto test = std::async(std::launch::async,
                         [&] { return CodeOf(recorder, "CameraTest", CameraParams(cameras.Port("silent"), "")); });
  while (cameras.Log("silent")["connections"].asInt() == 0) usleep(10'000);
  EXPECT_EQ(recorder.Get("CamCap", "vendor=User").Code(), 0);
  EXPECT_EQ(recorder.Send("GET", "/recorder/1/models", recorder.Login()).Code(), 0);
  EXPECT_EQ(test.wait_for(std::chrono::seconds(0)), std::future_status::timeout) << "the list came first";
  EXPECT_EQ(test.get(), 463);
}

TEST(Pools, OneUserDoesNotTakeTheWholeLine) {
  const SimCameras cameras(List({Faulty("silent", "silentAfterConnect")}));
  const TestRecorder recorder({.testMs = 200, .workers = 2});
  const std::string token = recorder.Control({"token", "add", "many"}).output;
  const Headers headers = {{"Authorization", "Bearer " + token.substr(0, token.find('\n'))}};
  const std::string body = ToText(CameraParams(cameras.Port("silent"), ""));
  std::vector<Connection> callers;
  for (int i = 0; i < 120; ++i) {
    callers.emplace_back(recorder.Port(), std::chrono::seconds(60))
        .Send(HttpRequest("POST", kApi + std::string("CameraTest"), headers, body));
  }
  const auto isRefused = [](const Connection& caller) {
    std::string bytes;
    while (MessageSize(bytes) == 0 && caller.Receive(bytes)) continue;
    return bytes.starts_with("HTTP/1.1 429");
  };
  const auto refused = std::ranges::count_if(callers, isRefused);
  EXPECT_GT(refused, 0);
  EXPECT_LT(refused, 120 - 64) << "what waits in a line of usual length";
}

TEST(Pools, HalfARequestKeepsNoWorkerWaiting) {
  const TestRecorder recorder({.workers = 1});
  const std::string whole = HttpRequest("POST", kApi + std::string("CameraTest"), recorder.Login(), "{}");
  std::vector<Connection> callers;
  for (const std::size_t missing : {whole.size() - 1, std::size_t{1}, std::size_t{1}}) {
    callers.emplace_back(recorder.Port(), std::chrono::seconds(60)).Send(whole.substr(0, whole.size() - missing));
  }
  EXPECT_EQ(CodeOf(recorder, "CameraTest", CameraParams(1, "")), 462);
  for (const Connection& caller : callers) {
    EXPECT_EQ(caller.State(), Connection::Idle::kQuiet) << "the server gave it up before it answered others";
  }
}

namespace {

/// The command lines of all processes.
std::string ProcessList() {
  std::string list;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) list += ReadText(entry.path() / "cmdline");
  return list;
}

}  // namespace

TEST(Secrets, AreNowhereButInTheirRecord) {
  const SimCameras cameras(List({Camera("good"), Faulty("silent", "silentAfterPlay"), Faulty("html", "htmlPage")}));
  const TestRecorder recorder({.testMs = 1500, .pictureMs = 1500, .workers = 2});
  const int id = recorder.AddCamera("Simcam", "RTSP-H264", cameras.Port("good"), "admin", kSecret);
  std::string seen = recorder.Control({"camera", "show", std::to_string(id)}).output;
  auto slow = std::async(std::launch::async, [&] {
    return recorder.Post("GetSnapshot", CameraParams(cameras.Port("silent"), kSecret)).body;
  });
  while (cameras.Log("silent")["sessions"].asInt() == 0) usleep(10'000);
  seen += ProcessList() + slow.get();

  for (const char* camera : {"good", "html"}) {
    const int port = cameras.Port(camera);
    for (const char* password : {kSecret, kFakePass}) {
      for (const char* model : {"RTSP-H264", "HTTP-Snapshot-Sizes"}) {
        Json::Value params = CameraParams(port, password, std::string("Simcam ") + model);
        for (const char* method : kCameraMethods) seen += recorder.Post(method, params).body;
        params["camId"] = id;
        params["camIP"] = "admin:" + std::string(kSecret) + "@127.0.0.1";  // as some paste it
        seen += recorder.Post("CameraTest", params).body;
      }
    }
  }
  seen += recorder.Log();
  for (const auto& file : std::filesystem::recursive_directory_iterator(recorder.StateFolder())) {
    if (file.is_regular_file()) seen += ReadText(file.path());
  }
  EXPECT_THAT(seen, testing::HasSubstr("SQLite format 3")) << "the database was searched";
  EXPECT_EQ(seen.find(kSecret), std::string::npos);
}
