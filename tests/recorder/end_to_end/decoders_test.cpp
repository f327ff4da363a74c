#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <span>

#include "rig/cameras.h"
#include "tests/recorder/end_to_end/expect.h"

// A parser that a camera has taken over: what it tries costs that camera's picture, and nothing else.

using namespace rig;
using testing::HasSubstr;
using testing::Not;

namespace {

struct Attack {
  const char* name;   ///< of the deed; see tests/recorder/decode/planted_main.cpp
  const char* cause;  ///< of the one request
  const char* log;
  const char* argument = "";  ///< KEY stands for the file with the key of the stored passwords
};

constexpr char kBadCall[] = "signal 31 (Bad system call)";

const Attack kAttacks[] = {
    {"read", "decoderFailed", kBadCall, "KEY"},
    {"write", "decoderFailed", kBadCall, "/tmp/recorder-media-was-here"},
    {"remove", "decoderFailed", kBadCall, "KEY"},
    {"execute", "decoderFailed", kBadCall, "/bin/true"},
    {"fork", "decoderFailed", kBadCall},
    {"socket", "decoderFailed", kBadCall},
    {"connect", "decoderFailed", kBadCall},
    {"ring", "decoderFailed", kBadCall},
    {"attach", "decoderFailed", kBadCall},
    {"signal", "decoderFailed", kBadCall},
    {"log", "decoderFailed", kBadCall, "a forged line"},
    {"code", "decoderFailed", kBadCall},
    {"allocate", "decoderFailed", "more memory than it may have"},
    {"loop", "decoderFailed", "gives no answer; it was killed"},
    {"lie", "decoderFailed", "makes no sense"},
};

/// What Landlock keeps from a process that has no filter.
const Attack kAttacksWithoutFilter[] = {
    {"remove", "notUnderstood", "answer not understood", "KEY"},
    {"execute", "notUnderstood", "answer not understood", "/bin/true"},
    {"attach", "notUnderstood", "answer not understood"},
};

struct OtherMedia {
  explicit OtherMedia(const char* program) { setenv("RECORDER_MEDIA", program, 1); }
  ~OtherMedia() { unsetenv("RECORDER_MEDIA"); }
  OtherMedia(const OtherMedia&) = delete;
  OtherMedia& operator=(const OtherMedia&) = delete;
};

/// A recorder whose recorder-media is another program, as that of each recorder which starts meanwhile.
struct RecorderWith : OtherMedia, TestRecorder {
  explicit RecorderWith(const char* program) : OtherMedia(program), TestRecorder({.testMs = 1000, .workers = 1}) {}
};

std::string Body(const Attack& attack, const std::string& keyFile) {
  const std::string argument = attack.argument;
  return std::string("planted:") + attack.name + " " + (argument == "KEY" ? keyFile : argument);
}

void ExpectHarmless(const TestRecorder& recorder, std::span<const Attack> attacks) {
  const std::filesystem::path keyFile = recorder.StateFolder() / "secret.key";
  Json::Value camera;
  for (const Attack& attack : attacks) {
    Json::Value& page = camera["pages"].append(Json::Value());
    page["path"] = std::string("/") + attack.name;
    page["body"] = Body(attack, keyFile);
  }
  const SimCameras cameras(List({Camera("camera", camera)}));
  Json::Value params = CameraParams(cameras.Port("camera"), kSecret, "User ");
  params["camVdoType"] = "MJPEG";
  recorder.AddCamera("User", "", 80, "admin", kSecret, "", "/");  // so that there is a key
  for (const Attack& attack : attacks) {
    SCOPED_TRACE(attack.name);
    const std::size_t logged = recorder.Log().size();
    params["camSourcePath"] = std::string("/") + attack.name;
    ExpectAnswer(recorder, "CameraTest", params, 468, attack.cause);
    EXPECT_THAT(recorder.Log().substr(logged), HasSubstr(attack.log));
    params["camSourcePath"] = "/snapshot.jpg";
    ExpectAnswer(recorder, "CameraTest", params, 0, "ok");
  }
  EXPECT_TRUE(std::filesystem::exists(keyFile));
  EXPECT_FALSE(std::filesystem::exists("/tmp/recorder-media-was-here"));
  EXPECT_THAT(recorder.Log(), Not(HasSubstr("a forged line")));
}

}  // namespace

TEST(Decoders, ThatAreTakenOverReachNothing) {
  const RecorderWith recorder(PLANTED_MEDIA);
  ExpectHarmless(recorder, kAttacks);
  EXPECT_THAT(recorder.Log(), Not(HasSubstr("runs without"))) << "filter, Landlock and limits are there";
}

TEST(Decoders, AreKeptFromFilesByLandlockAlone) {
  const RecorderWith recorder(UNFILTERED_MEDIA);
  ExpectHarmless(recorder, kAttacksWithoutFilter);
  EXPECT_THAT(recorder.Log(), HasSubstr("recorder-media runs without a filter of system calls"));
}

TEST(Decoders, AreNotUsedWithoutTheirSandboxWhereThatIsDemanded) {
  const RecorderWith recorder(UNFILTERED_MEDIA);
  Json::Value config = ParseJson(ReadText(recorder.ConfigFile()));
  config["demandSandbox"] = true;
  const std::filesystem::path strict = recorder.ConfigFile().parent_path() / "strict.json";
  std::ofstream(strict) << ToText(config);
  const Finished served = rig::Run("recorderctl", {"--config", strict, "serve"});
  EXPECT_NE(served.status, 0);
  EXPECT_THAT(served.output, HasSubstr("demandSandbox"));
}

TEST(Decoders, AreNoPartOfTheProgramsThatHoldKeys) {
  for (const std::string program : {"recorder-webapi", "recorder-watch", "recorderctl"}) {
    const std::string libraries = rig::Run("/usr/bin/ldd", {std::string(PROGRAM_FOLDER "/") + program}).output;
    EXPECT_THAT(libraries, HasSubstr("libcurl"));
    for (const char* decoder : {"libav", "libyuv", "jpeg"}) EXPECT_THAT(libraries, Not(HasSubstr(decoder))) << program;
  }
}
