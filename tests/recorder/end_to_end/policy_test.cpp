#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/recorder/end_to_end/cameras.h"
#include "tests/recorder/end_to_end/support.h"

namespace end_to_end {

namespace {

constexpr char kBlocked[] = "address not allowed by this recorder's policy";

/// What the recorder logs while `work` is done.
std::string NewLog(const TestRecorder& recorder, const std::function<void()>& work) {
  const std::size_t before = recorder.Log().size();
  work();
  return recorder.Log().substr(before);
}

/// Expects that no method contacts `host` and that each says so in its way.
void ExpectBlocked(const TestRecorder& recorder, const std::string& host, int port, const std::string& model) {
  const auto post = [&](const char* method, Json::Value params) {
    (params.isMember("camList") ? params["camList"][0]["ip"] : params["camIP"]) = host;
    Answer answer;
    const std::string log = NewLog(recorder, [&] { answer = recorder.Post(method, params); });
    EXPECT_THAT(log, testing::HasSubstr(kBlocked)) << method;
    return answer;
  };
  const std::string cameraModel = "Simcam " + model;
  EXPECT_EQ(post("CameraTest", TestParams(port, kSecret, cameraModel)).Code(), 468);
  EXPECT_EQ(post("CamCapRemote", RemoteParams(port, kSecret, model)).Code(), 457);
  EXPECT_EQ(post("CamCapUserDefineReso", SizeParams(port, kSecret, model)).Code(), 457);
  const Answer batch = post("CamBatAddVerify", Batch(List({BatchRow("1", port, kSecret, model)})));
  EXPECT_EQ(batch.json["data"]["resultList"][0]["errinfo"]["code"].asInt(), 468);
  const Answer picture = post("GetSnapshot", PictureParams(port, kSecret, cameraModel));
  EXPECT_FALSE(IsJpeg(DecodeBase64(picture.json["data"]["img"].asString())));
}

}  // namespace

TEST(Policy, KeepsCallersFromTheMachineAndTheLink) {
  const SimCameras cameras(List({Camera("camera")}));
  const int port = cameras.Port("camera");
  const TestRecorder recorder({.testMs = 20'000, .pictureMs = 20'000, .workers = 1, .modelsFolder = {}, .allow = {}});
  for (const char* host : {"127.0.0.1", "localhost", "127.1", "2130706433", "::1", "[::ffff:127.0.0.1]", "0.0.0.0",
                           "::", "169.254.169.254", "fe80::1%lo", "64:ff9b::7f00:1", "224.0.0.1"}) {
    SCOPED_TRACE(host);
    for (const char* model : {"RTSP-H264", "HTTP-Snapshot-Sizes"}) ExpectBlocked(recorder, host, port, model);
  }
  Json::Value generic = RemoteParams(port, kSecret, "Generic");
  for (const char* vendor : {"ONVIF", "PSIA"}) {
    generic["vendor"] = vendor;
    EXPECT_EQ(recorder.Post("CamCapRemote", generic).Code(), 457) << vendor;
  }
  const Finished call = recorder.Control({"call", "CameraTest", "--json", "-"}, ToText(TestParams(port, kSecret)));
  EXPECT_EQ(call.status, 1);
  EXPECT_THAT(call.output, testing::AllOf(testing::HasSubstr("468"), testing::HasSubstr(kBlocked)));
  EXPECT_EQ(cameras.Log("camera")["connections"].asInt(), 0);
}

TEST(Policy, KeepsCallersFromTheRecorderItselfAndFromWhatIsDenied) {
  const TestRecorder recorder(
      {.testMs = 20'000, .pictureMs = 20'000, .workers = 1, .modelsFolder = {}, .deny = {"127.0.0.2"}});
  Json::Value redirecting;
  redirecting["fault"] = "redirectOther";
  redirecting["redirectTo"] = "http://127.0.0.1:" + std::to_string(recorder.Port()) + "/";
  const SimCameras cameras(List({Camera("redirecting", redirecting), Camera("camera")}));
  EXPECT_EQ(recorder.Post("CameraTest", TestParams(cameras.Port("camera"), kSecret)).Code(), 0);

  ExpectBlocked(recorder, "127.0.0.1", recorder.Port(), "RTSP-H264");
  ExpectBlocked(recorder, "::ffff:127.0.0.1", recorder.Port(), "HTTP-Snapshot-Sizes");
  ExpectBlocked(recorder, "127.0.0.2", cameras.Port("camera"), "RTSP-H264");
  ExpectBlocked(recorder, "127.0.0.1", cameras.Port("redirecting"), "HTTP-Snapshot-Sizes");
}

TEST(Tls, IsAllThatItsPortSpeaks) {
  const TempFolder folder;
  const std::string certificate = (folder.Path() / "certificate.pem").string();
  const std::string key = (folder.Path() / "key.pem").string();
  const Finished made =
      end_to_end::Run("/usr/bin/openssl",
                      {"req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-subj",
                       "/CN=localhost", "-addext", "subjectAltName=IP:127.0.0.1", "-keyout", key, "-out", certificate});
  ASSERT_EQ(made.status, 0) << made.output;
  const TestRecorder recorder({.testMs = 5000,
                               .pictureMs = 5000,
                               .workers = 1,
                               .modelsFolder = {},
                               .serveArguments = {"--tls-certificate", certificate, "--tls-key", key}});
  const std::string address = "://127.0.0.1:" + std::to_string(recorder.Port()) + "/api/NORV.Vistrel.CameraCap/1/";
  const std::string login = "Authorization: " + recorder.Login().find("Authorization")->second;
  const auto get = [&](const std::string& scheme) {
    return end_to_end::Run("/usr/bin/curl",
                           {"-sS", "--cacert", certificate, "-H", login, scheme + address + "CamCap?vendor=User"});
  };
  EXPECT_THAT(get("https").output, testing::HasSubstr("User Define"));
  const Finished plain = get("http");
  EXPECT_NE(plain.status, 0);
  EXPECT_THAT(plain.output, testing::Not(testing::HasSubstr("User Define")));
}

}  // namespace end_to_end
