#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <thread>

#include "recorder/device/asked/onvif/ask.h"
#include "recorder/device/asked/onvif/soap.h"
#include "recorder/device/asked/onvif/uri.h"
#include "recorder/device/asked/onvif/username_token.h"
#include "recorder/request/request_scope.h"
#include "tests/recorder/device/scripted_port.h"
#include "tests/recorder/rows.h"

namespace recorder::onvif {
namespace {

using namespace std::string_literals;

std::string Read(const std::string& file) {
  std::ifstream stream(DATA_FOLDER "/onvif/" + file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

constexpr char kUnknown[] = "no such file";  ///< stands for a request that the camera does not know
constexpr char kNoLogin[] = "odd/notAuthorized.xml";
constexpr char kPage[] = "odd/page.html";
constexpr char kSilent[] = "silent";  ///< stands for a request that it answers too late
constexpr char kChallenge[] = R"(Digest realm="cam", nonce="1", qop="auth")";

/// A camera that answers each request with the file of that name, or that it does not know it.
class Camera {
 public:
  struct Script {
    std::string folder;
    std::map<std::string, std::string> files = {};  ///< that stand in for the folder's own, by request
    std::string loginFault = "";                    ///< the answer to a request without a login, where one is needed
    int faultStatus = 500;
    bool refusesLogin = false;
    int refusal = 0;             ///< status of the answer to a refused login; 0: faultStatus
    std::string challenge = "";  ///< that goes with every answer of status 401
  };

  explicit Camera(Script script, std::chrono::milliseconds limit = std::chrono::seconds(5))
      : script_(std::move(script)), scope_(limit) {}

  Outcome Ask(const std::string& channel, const std::string& user, CameraReport& report) {
    return onvif::Ask({"127.0.0.1", port_.Number(), user, user.empty() ? "" : "secret"}, channel, report);
  }

  std::vector<Exchanged> Log() const { return port_.Log(); }

  std::ptrdiff_t Logins() const {
    return std::ranges::count_if(Log(), [](const Exchanged& one) { return !one.asked.login.empty(); });
  }

  /// Of the one request in which the camera is asked.
  RequestScope& Scope() { return scope_; }

 private:
  recorder::Answer AnswerTo(const Question& asked) const {
    const bool hasLogin = !asked.login.empty();
    const bool isOpen = script_.loginFault.empty() || asked.action == "GetSystemDateAndTime";
    const auto other = script_.files.find(asked.action);
    std::string text =
        Read(other == script_.files.end() ? script_.folder + "/" + asked.action + ".xml" : other->second);
    if (!isOpen && (!hasLogin || script_.refusesLogin)) text = Read(script_.loginFault);
    if (text.empty()) text = Read("odd/notSupported.xml");
    int status = text.find("Fault>") == std::string::npos ? 200 : script_.faultStatus;
    if (hasLogin && script_.refusal != 0) status = script_.refusal;
    if (other != script_.files.end() && other->second == kSilent)
      std::this_thread::sleep_for(std::chrono::milliseconds(900));
    return {status, status == 401 ? script_.challenge : "", text};
  }

  const Script script_;
  RequestScope scope_;
  const ScriptedPort port_{[this](const Question& asked) { return AnswerTo(asked); }};
};

std::string Joined(const std::vector<std::string>& values) {
  std::string text;
  for (const std::string& value : values) text += (text.empty() ? "" : ",") + value;
  return text;
}

std::string Summary(const std::optional<Choices>& choices) {
  return choices ? Joined(choices->values) + " now " + choices->preset : "unknown";
}

std::string Summary(const ModelPath& path) {
  return path.path + (path.port ? " at " + std::to_string(*path.port) : "");
}

std::string Summary(const std::optional<std::vector<std::string>>& channels) {
  return channels ? "[" + Joined(*channels) + "]" : "unknown";
}

/// Lines that say all of `report`.
std::string Summary(const CameraReport& report) {
  std::vector<std::string> codecs;
  for (const ModelCodec& codec : report.codecs) codecs.push_back(codec.name + "/" + Joined(codec.streamTypes));
  return report.channel + " of " + Joined(report.channels) + ", streams " +
         std::to_string(report.streamCount.value_or(0)) + ", " + report.device + "\ncodecs " + Joined(codecs) +
         " now " + report.codec + "\nrates " + Summary(report.frameRates) + "\nsizes " + Summary(report.resolutions) +
         "\nqualities " + Summary(report.qualities) + "\naudio " + Summary(report.audioChannels) + ", motion " +
         Summary(report.motionChannels) + ", inputs " + std::to_string(report.digitalInputs.value_or(-1)) + ", rtsp " +
         std::to_string(report.rtspProtocols.value_or(0)) + "\n" + Summary(report.stream) + "\n" +
         (report.snapshot ? Summary(*report.snapshot) : "no snapshot");
}

/// 0, 10, 20 up to 1000.
std::string Tens() {
  std::string text = "0";
  for (int i = 1; i <= 100; ++i) text += "," + std::to_string(10 * i);
  return text;
}

void ExpectFacts(const Camera::Script& script, const std::string& channel, const std::string& wanted) {
  Camera camera(script);
  CameraReport report;
  EXPECT_EQ(camera.Ask(channel, "admin", report), Outcome::kOk);
  EXPECT_EQ(Summary(report), wanted);
  EXPECT_LE(camera.Log().size(), 12U);
  EXPECT_EQ(camera.Logins(), 0) << "nobody asked for one";
}

TEST(FactsTest, AreThoseOfTheMediaServiceThatHasThem) {
  ExpectFacts(
      {.folder = "media1", .faultStatus = 400}, "",
      "1 of 1,2, streams 2, \ncodecs MJPEG/RTSP,H.264/RTSP now H.264\nrates 1,2,3,4,5,6,25 now 25\n"
      "sizes 1280x720,704x576,352x288,176x144 now 704x576\nqualities 1,2,3,4,5 now 3\n"
      "audio [], motion [1], inputs 4, rtsp 3\n/live.sdp?unicast=true&proto=Onvif&%7Bstream%7D=1 at 8554\nno snapshot");
  ExpectFacts({.folder = "media2"}, "any",
              "1 of 1, streams 1, Some Maker Dome 5 V2.1 build 7\ncodecs H.265/RTSP,H.264/RTSP,MJPEG/RTSP now H.265\n"
              "rates 10,13,25,30 now 13\nsizes 3840x2160,2560x1440,1920x1080,1280x720 now 3840x2160\nqualities " +
                  Tens() + " now 80\naudio [1], motion [1], inputs 2, rtsp 0\n/ at 554\n/snap%20shot.jpg?ch=1");
}

TEST(FactsTest, AreTheProfilesWithoutOptions) {
  testing::internal::CaptureStderr();
  ExpectFacts(
      {"media1", {{"GetVideoEncoderConfigurationOptions", kUnknown}, {"GetEventProperties", kUnknown}}, "", 200}, "2",
      "2 of 1,2, streams 1, \ncodecs MPEG4/RTSP now MPEG4\nrates 60 now 60\nsizes 720x576 now 720x576\n"
      "qualities 40 now 40\naudio [2], motion unknown, inputs 4, rtsp 3\n"
      "/live.sdp?unicast=true&proto=Onvif&%7Bstream%7D=1 at 8554\nno snapshot");
  const std::string log = testing::internal::GetCapturedStderr();
  EXPECT_NE(log.find("can be chosen: sizes, frame rates, qualities."), std::string::npos) << log;
}

TEST(FactsTest, AreThoseOfMedia1WhereMedia2IsEmpty) {
  ExpectFacts(
      {"media1", {{"GetServices", "media2/GetServices.xml"}, {"GetAudioEncoderConfigurationOptions", "odd/cut.xml"}}},
      "2",
      "2 of 1,2, streams 1, \ncodecs MJPEG/RTSP,H.264/RTSP,MPEG4/RTSP now MPEG4\nrates 1,2,3,4,5,6,60 now 60\n"
      "sizes 1280x720,720x576,704x576,352x288,176x144 now 720x576\nqualities 1,2,3,4,5,40 now 40\n"
      "audio [2], motion [2], inputs 4, rtsp 3\n/live.sdp?unicast=true&proto=Onvif&%7Bstream%7D=1 at 8554\nno "
      "snapshot");
}

struct LoginCase {
  const char* name;
  Camera::Script script;
  Outcome outcome = Outcome::kLoginRefused;
  int logins = 1;
  const char* user = "admin";
};

const LoginCase kLoginCases[] = {
    {"CutProfiles", {"media1", {{"GetProfiles", "odd/cut.xml"}}}, Outcome::kNotUnderstood, 0},
    {"NoServices", {"media1", {{"GetCapabilities", kUnknown}}}, Outcome::kNotUnderstood, 0},
    {"NoStream", {"media2", {{"GetStreamUri", kUnknown}}}, Outcome::kNoVideo, 0},
    {"Right", {"media2", {}, kNoLogin, 400}, Outcome::kOk, 8},
    {"Wrong", {"media2", {}, kNoLogin, 400, true}},
    {"WrongInSoap11", {"media2", {}, "odd/soap11Fault.xml", 500, true}},
    {"ClockUnknown",
     {"media2", {{"GetSystemDateAndTime", "odd/noSuchDay.xml"}}, kNoLogin, 400, true},
     Outcome::kClockUnknown},
    {"NoWordOnTheLogin", {"media2", {{"GetServices", kPage}}, kNoLogin, 400}, Outcome::kNotThisProtocol},
    {"DigestForbidden", {"media2", {}, kNoLogin, 401, true, 403, kChallenge}},
    {"DigestRefusedByFault", {"media2", {}, kNoLogin, 401, true, 400, kChallenge}},
    {"TokenRefusedWithChallenge", {"media2", {}, kNoLogin, 400, true, 401, kChallenge}},
    {"TokenForbiddenByPage", {"media2", {{"GetServices", kPage}}, kNoLogin, 400, false, 403}},
    {"None", {"media2", {}, kNoLogin, 400}, Outcome::kLoginRefused, 0, ""},
    {"NotForAllQuestions", {"media2", {{"GetSnapshotUri", kNoLogin}}, kNoLogin, 400}, Outcome::kOk, 8},
    {"NotForProfiles", {"media2", {{"GetProfiles", kNoLogin}}, kNoLogin, 400}, Outcome::kLoginRefused, 2},
};

class LoginTest : public testing::TestWithParam<LoginCase> {};

TEST_P(LoginTest, OneWrongPasswordIsOneAttempt) {
  Camera camera(GetParam().script);
  CameraReport report;
  EXPECT_EQ(camera.Ask("", GetParam().user, report), GetParam().outcome);
  EXPECT_EQ(report.channels.empty(), GetParam().outcome != Outcome::kOk);
  EXPECT_EQ(camera.Logins(), GetParam().logins);
  if (GetParam().outcome == Outcome::kLoginRefused && GetParam().logins == 1) {
    EXPECT_EQ(camera.Ask("", GetParam().user, report), Outcome::kLoginRefused);
    EXPECT_EQ(camera.Logins(), 1) << "the refusal is remembered";
  }
  for (const Exchanged& one : camera.Log()) EXPECT_EQ(one.asked.body.find("secret"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Onvif, LoginTest, testing::ValuesIn(kLoginCases), kByName);

TEST(SilenceTest, LeavesWhatIsKnownAndTimeForMore) {
  Camera camera({"media1", {{"GetSnapshotUri", kSilent}}}, std::chrono::milliseconds(800));
  CameraReport report;
  EXPECT_EQ(camera.Ask("", "", report), Outcome::kOk);
  EXPECT_EQ(report.codecs.size(), 2U);
  EXPECT_EQ(report.audioChannels, std::vector<std::string>{}) << "known from the profile";
  EXPECT_EQ(camera.Scope().Refusal("127.0.0.1", 80, "", ""), std::nullopt);
  EXPECT_GT(camera.Scope().Deadline() - Clock::now(), std::chrono::milliseconds(200));
}

TEST(UsernameTokenTest, DigestIsThatOfOnvifsProgrammersGuide) {
  const std::string nonce = "\x2c\xaa\x88\xe8\x6f\xc0\x8a\x42\x82\x42\xb3\x74\xce\xa6\x45\x96"s;
  EXPECT_EQ(PasswordDigest(nonce, "2010-09-16T07:50:45Z", "userpassword"), "tuOSpGlFlIXsozq4HFNeeGeFLEI=");
}

TEST(SnapshotPathTest, PortIsTheUsersWhereServicesAre) {
  const auto port = [](const char* address) { return SnapshotPath(address, 80).value_or(ModelPath{"", -1}).port; };
  EXPECT_EQ(port("http://10.0.0.1/a"), std::nullopt);
  EXPECT_EQ(port("http://10.0.0.1:8080/a"), 8080);
  EXPECT_EQ(port("https://10.0.0.1/a"), 443);
  EXPECT_EQ(port("https://10.0.0.1:8443/a"), -1) << "nobody would know that it is TLS";
  EXPECT_EQ(port("rtsp://10.0.0.1/a"), -1);
  EXPECT_EQ(port(""), -1);
}

}  // namespace
}  // namespace recorder::onvif
