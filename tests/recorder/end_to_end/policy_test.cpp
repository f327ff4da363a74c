#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "rig/cameras.h"

using namespace rig;

namespace {

constexpr char kBlocked[] = "address not allowed by this recorder's policy";

/// Expects that no method contacts `host` and that each says so in its way.
void ExpectBlocked(const TestRecorder& recorder, const std::string& host, int port, const std::string& model) {
  Json::Value params = CameraParams(port, kSecret, "Simcam " + model);
  params["camIP"] = params["camList"][0]["ip"] = host;
  const std::map<std::string, int> codes = {{"CameraTest", 468}, {"CamBatAddVerify", 468}, {"GetSnapshot", -1}};
  for (const char* method : kCameraMethods) {
    const std::size_t logged = recorder.Log().size();
    EXPECT_EQ(CodeOf(recorder, method, params), codes.contains(method) ? codes.at(method) : 457) << method;
    EXPECT_THAT(recorder.Log().substr(logged), testing::HasSubstr(kBlocked)) << method;
  }
}

}  // namespace

TEST(Policy, KeepsCallersFromTheMachineAndTheLink) {
  const SimCameras cameras(List({Camera("camera")}));
  const int port = cameras.Port("camera");
  const TestRecorder recorder({.testMs = 20'000, .pictureMs = 20'000, .workers = 1, .allow = {}});
  for (const char* host : {"127.0.0.1", "localhost", "127.1", "2130706433", "::1", "[::ffff:127.0.0.1]", "0.0.0.0",
                           "::", "169.254.169.254", "fe80::1%lo", "64:ff9b::7f00:1", "224.0.0.1"}) {
    SCOPED_TRACE(host);
    for (const char* model : {"RTSP-H264", "HTTP-Snapshot-Sizes"}) ExpectBlocked(recorder, host, port, model);
  }
  for (const char* model : {"ONVIF Generic", "PSIA Generic"}) {
    EXPECT_EQ(CodeOf(recorder, "CamCapRemote", CameraParams(port, kSecret, model)), 457) << model;
  }
  const Finished call = recorder.Control({"call", "CameraTest", "--json", "-"}, ToText(CameraParams(port, kSecret)));
  EXPECT_EQ(call.status, 1);
  EXPECT_THAT(call.output, testing::AllOf(testing::HasSubstr("468"), testing::HasSubstr(kBlocked)));
  EXPECT_EQ(cameras.Log("camera")["connections"].asInt(), 0);
}

TEST(Policy, KeepsCallersFromTheRecorderItselfAndFromWhatIsDenied) {
  const TestRecorder recorder({.testMs = 20'000, .pictureMs = 20'000, .workers = 1, .deny = {"127.0.0.2"}});
  Json::Value redirecting;
  redirecting["fault"] = "redirectOther";
  redirecting["redirectTo"] = "http://127.0.0.1:" + std::to_string(recorder.Port()) + "/";
  const SimCameras cameras(List({Camera("redirecting", redirecting), Camera("camera")}));
  EXPECT_EQ(CodeOf(recorder, "CameraTest", CameraParams(cameras.Port("camera"), kSecret)), 0);

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
      rig::Run("/usr/bin/openssl", {"req", "-x509", "-days", "29", "-newkey", "ec", "-pkeyopt",
                                    "ec_paramgen_curve:prime256v1", "-nodes", "-subj", "/CN=localhost", "-addext",
                                    "subjectAltName=IP:127.0.0.1", "-keyout", key, "-out", certificate});
  ASSERT_EQ(made.status, 0) << made.output;
  const TestRecorder recorder({.serveArguments = {"--tls-certificate", certificate, "--tls-key", key}});
  const std::string address = "://127.0.0.1:" + std::to_string(recorder.Port()) + kApi;
  const std::string login = "Authorization: " + recorder.Login().at("Authorization");
  const auto get = [&](const std::string& scheme) {
    return rig::Run("/usr/bin/curl",
                    {"-sSi", "--cacert", certificate, "-H", login, scheme + address + "CamCap?vendor=User"});
  };
  EXPECT_THAT(get("https").output, testing::AllOf(testing::HasSubstr("User Define"),
                                                  testing::HasSubstr("\r\nStrict-Transport-Security: max-age=")));
  const Finished session =
      rig::Run("/usr/bin/curl",
               {"-sSi", "--cacert", certificate, "--json", R"({"user": "tester", "password": "login of the tester"})",
                "https://127.0.0.1:" + std::to_string(recorder.Port()) + "/recorder/1/session"});
  EXPECT_THAT(session.output, testing::AllOf(testing::HasSubstr("\r\nSet-Cookie: __Host-session="),
                                             testing::HasSubstr("; Secure\r\n")));
  EXPECT_THAT(recorder.Log(), testing::HasSubstr("The certificate in " + certificate + " ends on "));
  const Finished plain = get("http");
  EXPECT_NE(plain.status, 0);
  EXPECT_THAT(plain.output, testing::Not(testing::HasSubstr("User Define")));
}
