#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

#include "rig/cameras.h"
#include "rig/proxy.h"

// The network between recorder and camera fails: in time, with a clear code, and for that one request only.

using namespace rig;

namespace {

constexpr int kLimitMs = 1000;
constexpr std::chrono::milliseconds kLatest{kLimitMs + 4000};  // with what a busy machine adds

// A clip has the same key frame in every session, and costs no time to encode.
constexpr char kPlainClip[] = R"({"server": "scripted", "stream": {"source": "clip", "start": "key"}})";

/// The models that are asked. Of an ONVIF camera the web services alone lie behind the proxy, since it names the port
/// of its stream itself.
constexpr std::array kModels = {"Simcam RTSP-H264", "Simcam HTTP-Snapshot-Sizes", "ONVIF Generic"};

struct Seen {
  int code = 0;         ///< of CameraTest
  std::string passed;   ///< what came to it
  std::string picture;  ///< of GetSnapshot; "" when it was none of the camera's
};

class Network : public testing::Test {
 protected:
  Json::Value Configs() const {
    const Json::Value clip = ParseJson(kPlainClip);
    Json::Value onvif = clip;
    onvif["onvif"]["innerAddress"] = "127.0.0.1:" + std::to_string(proxies_[2].Port());
    return List(
        {Camera("healthy", clip), Camera(kModels[0], clip), Camera(kModels[1], clip), Camera(kModels[2], onvif)});
  }

  Answer PostInTime(const char* method, int port, const char* model, const char* host = "127.0.0.1") const {
    recorder_.ForgetCameras();  // a camera that is known is not asked
    Json::Value params = CameraParams(port, kSecret, model);
    params["camIP"] = host;
    const auto start = std::chrono::steady_clock::now();
    Answer answer = recorder_.Post(method, params);
    EXPECT_LT(std::chrono::steady_clock::now() - start, kLatest);
    EXPECT_EQ(answer.status, 200);
    return answer;
  }

  /// What a camera behind a faulty network gives. The next request, to another one, works.
  Seen Through(std::size_t model, NetworkFault fault) {
    Proxy& proxy = proxies_[model];
    Seen reply;
    proxy.LeadTo(cameras_.Port(kModels[model]), fault);
    reply.code = PostInTime("CameraTest", proxy.Port(), kModels[model]).Code();
    reply.passed = proxy.Passed();
    proxy.LeadTo(cameras_.Port(kModels[model]), fault);
    reply.picture = PictureOf(PostInTime("GetSnapshot", proxy.Port(), kModels[model]));
    EXPECT_EQ(PostInTime("CameraTest", cameras_.Port("healthy"), kModels[0]).Code(), 0);
    return reply;
  }

  std::array<Proxy, kModels.size()> proxies_;
  const SimCameras cameras_{Configs()};
  const TestRecorder recorder_{{.testMs = kLimitMs, .pictureMs = kLimitMs, .workers = 1}};
};

TEST_F(Network, EachFaultHasItsCode) {
  struct Row {
    const char* name;
    NetworkFault fault;
    int code;
  };
  constexpr Row kRows[] = {{"none", {}, 0},
                           {"refused", {.isRefusing = true}, 462},
                           {"full", {.isFull = true}, 463},
                           {"delayed", {.delayMs = 20}, 0},
                           {"delayed for too long", {.delayMs = 1500}, 463},
                           {"sliced", {.sliceSize = 100}, 0},
                           {"dripping", {.delayMs = 1000, .sliceSize = 30}, 463}};
  for (std::size_t model = 0; model < kModels.size(); ++model) {
    for (const Row& row : kRows) {
      SCOPED_TRACE(std::string(row.name) + ": " + kModels[model]);
      const Seen reply = Through(model, row.fault);
      EXPECT_EQ(reply.code, row.code);
      EXPECT_EQ(reply.picture.empty(), row.code != 0);
    }
  }
}

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

TEST_F(Network, ACutInAnyPhaseIsAFailureAndNeverHalfAPicture) {
  const std::string streamed = Through(0, {}).picture;
  for (std::size_t model = 0; model < kModels.size(); ++model) {
    const Seen whole = Through(model, {});
    ASSERT_EQ(whole.code, 0);
    int failures = 0;
    for (const std::size_t cut : CutsOf(proxies_[model].Passed())) {
      SCOPED_TRACE(std::to_string(cut) + " bytes: " + kModels[model]);
      const Seen reply = Through(model, {.cutAfter = cut});
      const bool maySeemRefused = IsLoginUnanswered(reply.passed);
      EXPECT_TRUE(reply.code == 0 || reply.code == 468 || (reply.code == 464 && maySeemRefused)) << reply.code;
      failures += reply.code == 0 ? 0 : 1;
      const bool hasPassed = proxies_[model].Passed().find(reply.picture) != std::string::npos;
      EXPECT_TRUE(hasPassed || reply.picture == streamed) << "none, or one that the camera sent";
    }
    EXPECT_GT(failures, 4);
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
      EXPECT_EQ(PostInTime("CameraTest", proxy->Port(), model, host).Code(), 0) << model << " at " << host;
      EXPECT_NE(PictureOf(PostInTime("GetSnapshot", proxy->Port(), model, host)), "");
    }
  }
}

TEST_F(Network, NamesAreLookedUpInTime) {
  if (!CanRunAlone()) GTEST_SKIP() << "no namespaces can be made here";
  const TempFolder folder;
  folder.Write("cameras.json", R"({"cameras": [{"name": "resolver", "port": 53, "fault": "silentAfterConnect"}]})");
  folder.Write("resolv.conf", "nameserver 127.0.0.1\noptions use-vc\n");
  // The C library alone would wait longer than the command may take for a resolver that never answers.
  for (const auto& [service, code] : {std::pair("hosts: files\n", "462"), std::pair("hosts: dns\n", "463")}) {
    folder.Write("nsswitch.conf", service);
    for (const char* model : kModels) {
      Json::Value params = CameraParams(80, kSecret, model);
      params["camIP"] = "camera.invalid";
      const Finished call =
          RunAlone(folder, {"--config", recorder_.ConfigFile(), "call", "CameraTest", "--json", "-"}, ToText(params));
      EXPECT_THAT(call.output, testing::HasSubstr(std::string("\"code\":") + code)) << service << model;
    }
  }
}

}  // namespace
