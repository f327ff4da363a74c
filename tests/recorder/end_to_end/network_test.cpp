#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <memory>
#include <set>
#include <stdexcept>

#include "tests/recorder/end_to_end/cameras.h"
#include "tests/recorder/end_to_end/proxy.h"
#include "tests/recorder/end_to_end/support.h"

// The network between recorder and camera fails: in time, with a clear code, and for that one request only.

namespace end_to_end {

namespace {

using Verb = NetworkFault::Verb;

constexpr int kLimitMs = 1000;
constexpr std::chrono::milliseconds kLatest{kLimitMs + 4000};  // with what a busy machine adds

// A clip has the same key frame in every session, and costs no time to encode.
constexpr char kClip[] = R"({"server": "scripted", "stream": {"source": "clip", "start": "key"}})";

/// The models that are asked. Of an ONVIF camera the web services alone lie behind the proxy, since it names the port
/// of its stream itself.
constexpr std::array kModels = {"Simcam RTSP-H264", "Simcam HTTP-Snapshot-Sizes", "ONVIF Generic"};

struct Reply {
  int code = 0;         ///< of CameraTest
  std::string passed;   ///< what came to it
  std::string picture;  ///< of GetSnapshot; "" when it was none of the camera's
};

class Network : public testing::Test {
 protected:
  Json::Value Configs() const {
    const Json::Value clip = ParseJson(kClip);
    Json::Value onvif = clip;
    onvif["onvif"]["innerAddress"] = "127.0.0.1:" + std::to_string(proxies_[2].Port());
    return List(
        {Camera("healthy", clip), Camera(kModels[0], clip), Camera(kModels[1], clip), Camera(kModels[2], onvif)});
  }

  Answer PostInTime(const std::string& method, Json::Value params, const std::string& host) const {
    std::filesystem::remove_all(recorder_.StateFolder() / "capabilities");  // a camera that is known is not asked
    params["camIP"] = host;
    const auto start = std::chrono::steady_clock::now();
    Answer answer = recorder_.Post(method, params);
    EXPECT_LT(std::chrono::steady_clock::now() - start, kLatest);
    EXPECT_EQ(answer.status, 200);
    return answer;
  }

  int Test(int port, const char* model, const std::string& host = "127.0.0.1") const {
    return PostInTime("CameraTest", TestParams(port, kSecret, model), host).Code();
  }

  std::string Picture(int port, const char* model, const std::string& host = "127.0.0.1") const {
    const Answer answer = PostInTime("GetSnapshot", PictureParams(port, kSecret, model), host);
    const std::string picture = DecodeBase64(answer.json["data"]["img"].asString());
    return IsJpeg(picture) ? picture : "";
  }

  /// What a camera behind a faulty network gives. The next request, to another one, works.
  Reply Ask(std::size_t model, NetworkFault fault) {
    Proxy& proxy = proxies_[model];
    Reply reply;
    proxy.LeadTo(cameras_.Port(kModels[model]), fault);
    reply.code = Test(proxy.Port(), kModels[model]);
    reply.passed = proxy.Passed();
    proxy.LeadTo(cameras_.Port(kModels[model]), fault);
    reply.picture = Picture(proxy.Port(), kModels[model]);
    EXPECT_EQ(Test(cameras_.Port("healthy"), kModels[0]), 0);
    return reply;
  }

  std::array<Proxy, kModels.size()> proxies_;
  const SimCameras cameras_{Configs()};
  const TestRecorder recorder_{{.testMs = kLimitMs, .pictureMs = kLimitMs, .workers = 1, .modelsFolder = {}}};
};

}  // namespace

TEST_F(Network, EachFaultHasItsCode) {
  struct Row {
    const char* name;
    NetworkFault fault;
    int code;
  };
  constexpr Row kRows[] = {{"none", {}, 0},
                           {"refused", {Verb::kRefuse}, 462},
                           {"full", {Verb::kFull}, 463},
                           {"delayed", {Verb::kDelay, 20}, 0},
                           {"delayed for too long", {Verb::kDelay, 1500}, 463},
                           {"sliced", {Verb::kSlice, 100}, 0},
                           {"dripping", {Verb::kDrip, 30}, 463}};
  for (std::size_t model = 0; model < kModels.size(); ++model) {
    for (const Row& row : kRows) {
      SCOPED_TRACE(std::string(row.name) + ": " + kModels[model]);
      const Reply reply = Ask(model, row.fault);
      EXPECT_EQ(reply.code, row.code);
      EXPECT_EQ(reply.picture.empty(), row.code != 0);
    }
  }
}

namespace {

constexpr std::array kAnswers = {"RTSP/1.0 ", "HTTP/1.1 "};

/// Before, within and behind the head of each answer, and within the picture.
std::set<std::size_t> CutsOf(const std::string& transcript) {
  std::set<std::size_t> cuts = {1, transcript.size() / 2, transcript.size() - 300};
  for (const char* answer : kAnswers) {
    for (std::size_t at = transcript.find(answer); at != std::string::npos; at = transcript.find(answer, at + 1)) {
      cuts.insert({at, at + 20, at + 300});
    }
  }
  return cuts;
}

/// True when a login may have been sent to which nothing came: some cameras refuse in this way.
bool IsLoginUnanswered(const std::string& passed) {
  const std::size_t challenge = passed.find(" 401 ");
  return challenge != std::string::npos && std::all_of(kAnswers.begin(), kAnswers.end(), [&](const char* answer) {
           return passed.find(answer, challenge) == std::string::npos;
         });
}

}  // namespace

TEST_F(Network, ACutInAnyPhaseIsAFailureAndNeverHalfAPicture) {
  const std::string streamed = Ask(0, {}).picture;
  for (std::size_t model = 0; model < kModels.size(); ++model) {
    const Reply whole = Ask(model, {});
    ASSERT_EQ(whole.code, 0);
    int failures = 0;
    for (const std::size_t cut : CutsOf(proxies_[model].Passed())) {
      SCOPED_TRACE(std::to_string(cut) + " bytes: " + kModels[model]);
      const Reply reply = Ask(model, {Verb::kCut, cut});
      const bool maySeemRefused = IsLoginUnanswered(reply.passed);
      EXPECT_TRUE(reply.code == 0 || reply.code == 468 || (reply.code == 464 && maySeemRefused)) << reply.code;
      failures += reply.code == 0 ? 0 : 1;
      const bool hasPassed = proxies_[model].Passed().find(reply.picture) != std::string::npos;
      EXPECT_TRUE(hasPassed || reply.picture == streamed) << "none, or one that the camera sent";
    }
    EXPECT_GT(failures, 4);
  }
}

TEST_F(Network, AChangedByteIsAnsweredInTime) {
  for (std::size_t model = 0; model < kModels.size(); ++model) {
    Ask(model, {});
    const std::size_t size = proxies_[model].Passed().size();
    for (std::size_t at = 4; at < size; at += at) {
      SCOPED_TRACE("byte " + std::to_string(at) + ": " + kModels[model]);
      const int code = Ask(model, {Verb::kCorrupt, at}).code;
      EXPECT_TRUE(code == 0 || (code >= 462 && code <= 468)) << code;
    }
  }
}

TEST_F(Network, CamerasAreReachedOverIpv6) {
  std::unique_ptr<Proxy> proxy;
  try {
    proxy = std::make_unique<Proxy>("::1");
  } catch (const std::runtime_error&) {
    GTEST_SKIP() << "this machine has no IPv6";
  }
  for (const char* model : {kModels[0], kModels[1]}) {
    proxy->LeadTo(cameras_.Port(model));
    for (const char* host : {"::1", "[::1]"}) {
      EXPECT_EQ(Test(proxy->Port(), model, host), 0) << model << " at " << host;
      EXPECT_NE(Picture(proxy->Port(), model, host), "");
    }
  }
}

TEST_F(Network, RedirectsLeadNowhereElse) {
  Proxy elsewhere("127.0.0.2");
  elsewhere.LeadTo(cameras_.Port(kModels[1]));
  const std::string other = "http://127.0.0.2:" + std::to_string(elsewhere.Port()) + "/snapshot.jpg?size=640x480";
  Json::Value configs = List({Faulty("circle", "redirectLoop")});
  for (const std::string& target : {other, std::string("file:///etc/hostname")}) {
    Json::Value config = Faulty(target, "redirectOther");
    config["redirectTo"] = target;
    configs.append(config);
  }
  const SimCameras redirecting(configs);
  for (const Json::Value& config : configs) {
    const std::string name = config["name"].asString();
    EXPECT_EQ(Test(redirecting.Port(name), kModels[1]), 468) << name;
    EXPECT_EQ(Picture(redirecting.Port(name), kModels[1]), "") << name;
    EXPECT_LT(redirecting.Log(name)["requestCount"].asInt(), 20) << name;
  }
  EXPECT_EQ(elsewhere.Passed(), "");
}

namespace {

/// Whoever is not root needs a user namespace, too. In a process namespace everything ends with the first process.
const char* NamespaceFlags() { return geteuid() == 0 ? "-nmpf" : "-rnmpf"; }

/// The code of CameraTest for a camera that has a name, on a machine of its own: with this line of nsswitch.conf(5),
/// and with a resolver that accepts connections and never answers. The C library alone would wait for that one longer
/// than the five seconds here.
int TestByName(const TestRecorder& recorder, const std::string& nameService, const char* model) {
  const TempFolder folder;
  Json::Value config;
  config["cameras"] = List({Faulty("resolver", "silentAfterConnect")});
  config["cameras"][0]["port"] = 53;
  folder.Write("cameras.json", ToText(config));
  folder.Write("resolv.conf", "nameserver 127.0.0.1\noptions use-vc\n");
  folder.Write("nsswitch.conf", nameService);
  const std::string script = R"(
    ip link set lo up
    for file in resolv.conf nsswitch.conf; do mount --bind $file /etc/$file; done
    "$0/simcam" cameras.json > started &
    while [ ! -s started ]; do sleep 0.02; done
    exec timeout 5 "$0/recorderctl" --config "$1" call CameraTest --json - 2> log)";
  Json::Value params = TestParams(80, kSecret, model);
  params["camIP"] = "camera.invalid";
  const auto recorderConfig = recorder.StateFolder().parent_path() / "recorder.json";
  const Finished finished =
      Run("/usr/bin/env",
          {"-C", folder.Path(), "unshare", NamespaceFlags(), "sh", "-e", "-c", script, PROGRAM_FOLDER, recorderConfig},
          ToText(params));
  return Answer{finished.status, ParseJson(finished.output), "", ""}.Code();
}

}  // namespace

TEST_F(Network, NamesAreLookedUpInTime) {
  const Finished namespaces = end_to_end::Run("/usr/bin/unshare", {NamespaceFlags(), "true"});
  if (namespaces.status != 0) GTEST_SKIP() << "no namespace can be made here";
  for (const char* model : kModels) {
    EXPECT_EQ(TestByName(recorder_, "hosts: files\n", model), 462) << "no such name: " << model;
    EXPECT_EQ(TestByName(recorder_, "hosts: dns\n", model), 463) << "no answer about the name: " << model;
  }
}

}  // namespace end_to_end
