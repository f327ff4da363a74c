#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "rig/cameras.h"
#include "tests/recorder/end_to_end/expect.h"

// Cameras of the generic protocols, ONVIF and PSIA, which are asked what they can do.

using namespace rig;

namespace {

/// A camera from the text of its configuration.
Json::Value Configured(const std::string& name, const std::string& json) { return Camera(name, ParseJson(json)); }

Json::Value GenericParams(const std::string& vendor, int port, const std::string& password) {
  return CameraParams(port, password, vendor + " Generic");
}

std::filesystem::path CameraFile(const TestRecorder& recorder) {
  for (const auto& file : std::filesystem::directory_iterator(recorder.StateFolder() / "capabilities")) {
    if (file.path().extension() == ".json") return file.path();
  }
  return {};
}

int Refused(const SimCameras& cameras, const std::string& name) { return cameras.Log(name)["refusedLogins"].asInt(); }

Json::Value Document(const TestRecorder& recorder, const Json::Value& params) {
  return recorder.Post("CamCapRemote", params).json["data"]["camCap"][0];
}

struct AskedCamera {
  const char* name;
  const char* vendor;
  const char* config;
  const char* codec;
  const char* channel;
};

const AskedCamera kCameras[] = {
    {"media2", "ONVIF",
     R"({"onvif": {"media": ["2"], "login": "http", "inputs": 2, "motion": "analytics"},
         "stream": {"codec": "h265"}})",
     "H.265", "1"},
    {"media1", "ONVIF", R"({"onvif": {"media": ["1"], "login": "token", "inputs": 2, "services": false,
         "deviceIo": false, "motion": "events"}})",
     "H.264", "1"},
    {"psia", "PSIA", R"({"psia": {"channels": ["101", "102"], "inputs": 2}, "stream": {"audio": "first"}})", "H.264",
     "101"},
};

Json::Value AllCameras() {
  return ListOf(kCameras, [](const AskedCamera& camera) { return Configured(camera.name, camera.config); });
}

/// Requests that carried a question, challenges not counted.
int Questions(const Json::Value& log, const std::string& path) {
  int count = 0;
  for (const Json::Value& request : log["requests"]) {
    count += request["path"].asString().starts_with(path) && request["login"].asBool() ? 1 : 0;
  }
  return count;
}

TEST(AskedCameras, FillTheirDocument) {
  const SimCameras cameras(AllCameras());
  const TestRecorder recorder;
  recorder.AddCamera("ONVIF", "Generic", cameras.Port("media1"), "admin", kSecret);
  for (const AskedCamera& camera : kCameras) {
    SCOPED_TRACE(camera.name);
    const Json::Value document = Document(recorder, GenericParams(camera.vendor, cameras.Port(camera.name), kSecret));
    EXPECT_EQ(document["defChanl"], camera.channel);
    EXPECT_THAT(ToText(document["ResoList"]), testing::HasSubstr(R"("640x480")"));
    EXPECT_EQ(document["defReso"], "640x480");
    EXPECT_EQ(document["defFPS"], "25");
    EXPECT_GT(document["cntQual"].asInt(), 1);
    EXPECT_EQ(document["DINum"], 2);
    EXPECT_TRUE(document["audioCap"].asBool());
    EXPECT_THAT(ToText(document["MDList"]), testing::HasSubstr(R"(")" + std::string(camera.channel) + R"(")"));
    std::set<std::string> codecs;
    for (const Json::Value& codec : document["videoCapList"]) codecs.insert(codec["vt"].asString());
    EXPECT_TRUE(codecs.contains(camera.codec)) << document;

    const Json::Value log = cameras.Log(camera.name);
    EXPECT_LE(Questions(log, std::string(camera.vendor) == "PSIA" ? "/PSIA" : "/onvif"), 12) << log;
    EXPECT_EQ(log["mostConnections"], 1) << log;
    EXPECT_LE(log["connections"], 3) << "one before the login is wanted, one to learn that, one with it";
  }
  EXPECT_THAT(recorder.Control({"camera", "show", "1"}).output, testing::HasSubstr("serial: 51AC0DE5\n"));
}

TEST(AskedCameras, AnyMethodMayBeTheFirstCall) {
  const std::map<std::string, int> codesOfWrongPassword = {{"CameraTest", 464},
                                                           {"CamBatAddVerify", 464},
                                                           {"CamCapRemote", 461},
                                                           {"GetSnapshot", -1},
                                                           {"CamCapUserDefineReso", 457}};
  const SimCameras cameras(AllCameras());
  const TestRecorder recorder;
  for (const AskedCamera& camera : kCameras) {
    EXPECT_EQ(recorder.Get("CamCap", std::string("model=Generic&vendor=") + camera.vendor).Code(), 0);
    for (const auto& [method, code] : codesOfWrongPassword) {
      SCOPED_TRACE(std::string(camera.name) + " " + method);
      const int port = cameras.Port(camera.name);
      recorder.ForgetCameras();
      const int refused = Refused(cameras, camera.name);
      EXPECT_EQ(CodeOf(recorder, method, GenericParams(camera.vendor, port, "wrong")), code);
      EXPECT_EQ(Refused(cameras, camera.name), refused + 1) << "one wrong password is one attempt";
      recorder.ForgetCameras();
      EXPECT_EQ(CodeOf(recorder, method, GenericParams(camera.vendor, port, kSecret)), 0) << recorder.Log();
      EXPECT_EQ(Refused(cameras, camera.name), refused + 1);
    }
  }
  EXPECT_THAT(recorder.Log(), testing::Not(testing::HasSubstr(kSecret)));
  for (const auto& file : std::filesystem::directory_iterator(recorder.StateFolder() / "capabilities")) {
    EXPECT_THAT(ReadText(file.path()), testing::Not(testing::HasSubstr(kSecret)));
  }
}

TEST(AskedCameras, ShowTheChannelThatIsAskedFor) {
  const std::string streams = R"("stream": [{"path": "/one"}, {"path": "/two", "width": 320, "height": 240}]})";
  const SimCameras cameras(List({Configured("ONVIF", R"({"onvif": {"channels": 2}, )" + streams),
                                 Configured("PSIA", R"({"psia": {"channels": ["1", "2"]}, )" + streams)}));
  const TestRecorder recorder;
  for (const char* vendor : {"ONVIF", "PSIA"}) {
    SCOPED_TRACE(vendor);
    Json::Value params = GenericParams(vendor, cameras.Port(vendor), kSecret);
    const auto size = [&](const char* channel) {
      params["camChannel"] = channel;
      EXPECT_EQ(CodeOf(recorder, "GetSnapshot", params), 0);
      return recorder.Post("CamCapUserDefineReso", params).json["data"]["userDefineReso"].asString();
    };
    EXPECT_EQ(size("2"), "320x240") << "as the first call ever";
    EXPECT_EQ(size("1"), "640x480");
    params["camCapCmd"] = 0;
    for (const auto& [channel, wanted] : {std::pair("2", "320x240"), std::pair("1", "640x480")}) {
      params["camChannel"] = channel;
      EXPECT_EQ(Document(recorder, params)["defReso"], wanted);
    }
  }
}

TEST(AskedCameras, AreAskedByTheirDefaultChannelInAList) {
  const SimCameras cameras(List({Configured("psia", R"({"psia": {"channels": ["101", "1"], "disabled": ["1"]}})")}));
  const TestRecorder recorder;
  Json::Value params = GenericParams("PSIA", cameras.Port("psia"), kSecret);
  params["camChannel"] = "";
  for (const char* method : {"CamBatAddVerify", "CameraTest", "GetSnapshot", "CamCapRemote"}) {
    recorder.ForgetCameras();
    EXPECT_EQ(CodeOf(recorder, method, params), 0) << method << recorder.Log();
  }
  recorder.AddCamera("PSIA", "Generic", cameras.Port("psia"), "admin", kSecret, "101");
  recorder.ForgetCameras();
  params["camList"][0]["password"] = kFakePass;
  EXPECT_EQ(CodeOf(recorder, "CamBatAddVerify", params), 0) << "the default channel is the record's";
}

struct Trouble {
  const char* name;
  const char* config;
  int testCode;
  int remoteCode;
  const char* cause = "ok";

  const char* Vendor() const { return std::string(config).find("psia") == std::string::npos ? "ONVIF" : "PSIA"; }
};

const Trouble kTroubles[] = {
    {"refused", R"({"onvif": {}, "fault": "refused"})", 462, 458, "unreachable"},
    {"silent", R"({"onvif": {}, "fault": "silentAfterConnect"})", 463, 458, "timedOut"},
    {"noService", R"({"onvif": {"trouble": "noService"}})", 468, 460, "noService"},
    {"htmlPage", R"({"onvif": {"trouble": "htmlPage"}})", 468, 460, "noService"},
    {"notHttp", R"({"onvif": {}, "fault": "notHttp"})", 468, 460, "noService"},
    {"brokenXml", R"({"onvif": {"trouble": "brokenXml"}})", 468, 457, "notUnderstood"},
    {"entities", R"({"onvif": {"trouble": "entities"}})", 468, 457, "notUnderstood"},
    {"ampersands", R"({"onvif": {"trouble": "ampersands"}})", 468, 457, "notUnderstood"},
    {"elements", R"({"onvif": {"trouble": "elements"}})", 0, 0},
    {"huge", R"({"onvif": {"trouble": "huge"}})", 468, 457, "notUnderstood"},
    {"endless", R"({"onvif": {"trouble": "endless"}})", 468, 457, "notUnderstood"},
    {"unknownLogin", R"({"onvif": {}, "login": "bearer"})", 468, 457, "loginUnsupported"},
    {"noServicePsia", R"({"psia": {"trouble": "noService"}})", 468, 460, "noService"},
    {"brokenPsia", R"({"psia": {"trouble": "brokenXml"}})", 468, 457, "notUnderstood"},
    {"clock", R"({"onvif": {"login": "token", "clockHours": 3}})", 0, 0},
    {"fault401", R"({"onvif": {"login": "token", "faultStatus": 401}})", 0, 0},
    {"either", R"({"onvif": {"login": "either"}})", 0, 0},
    {"innerAddress", R"({"onvif": {"innerAddress": "192.0.2.7"}})", 0, 0},
    {"strangeXml", R"({"onvif": {"prefixes": "strange", "badAmpersand": true}})", 0, 0},
    {"schemaOfService", R"({"onvif": {"prefixes": "ofService"}})", 0, 0},
    {"undeclared", R"({"onvif": {"prefixes": "undeclared", "login": "token"}})", 0, 0},
    {"sha256", R"({"onvif": {}, "login": "digest-sha256"})", 0, 0},
    {"overTls", R"({"onvif": {"trouble": "redirectTls"}})", 0, 0},
    {"rtspSnapshot", R"({"onvif": {"snapshotUri": "rtsp"}})", 0, 0},
    {"noSnapshot", R"({"onvif": {"snapshotUri": "none"}})", 0, 0},
    {"tlsStream", R"({"onvif": {"tlsStream": true}, "tls": "too"})", 0, 0},
    {"snapshotLogin", R"({"onvif": {"snapshotUri": "withLogin"}})", 0, 0},
};

TEST(AskedCameras, TroubleHasItsCode) {
  const auto configured = [](const Trouble& trouble) { return Configured(trouble.name, trouble.config); };
  const SimCameras cameras(ListOf(kTroubles, configured));
  const TestRecorder recorder({.testMs = 2000, .pictureMs = 2000, .workers = 1});
  for (const Trouble& trouble : kTroubles) {
    SCOPED_TRACE(trouble.name);
    Json::Value params = GenericParams(trouble.Vendor(), cameras.Port(trouble.name), kSecret);
    const auto expect = [&](const char* method, int code) {
      ExpectAnswer(recorder, method, params, code, trouble.cause);
    };
    expect("CameraTest", trouble.testCode);
    expect("CamBatAddVerify", trouble.testCode);
    expect("CamCapRemote", trouble.remoteCode);
    expect("GetSnapshot", trouble.testCode == 0 ? 0 : -1);
    params["camCapCmd"] = 0;
    expect("CamCapRemote", trouble.testCode == 0 ? 0 : 459);
  }
  EXPECT_THAT(recorder.Log(), testing::HasSubstr("read by their names alone"));
}

/// A camera of two channels, and a recorder that has not asked it yet.
class KeptCamera : public testing::Test {
 protected:
  int Code(const char* method, const char* channel = "1") {
    params_["camChannel"] = channel;
    return CodeOf(recorder_, method, params_);
  }
  int Asked() const { return Questions(cameras_.Log("kept"), "/onvif"); }

  /// Makes what is kept more than a day older.
  void Age() const {
    constexpr std::int64_t kMoreThanADay = 90'000;  // in seconds
    const std::filesystem::path file = CameraFile(recorder_);
    Json::Value json = ParseJson(ReadText(file));
    for (Json::Value& model : json["models"]) {
      Json::Value& time = model["readings"]["stream"]["time"];
      time = time.asInt64() - kMoreThanADay;
    }
    std::ofstream(file) << json;
  }

  const SimCameras cameras_{
      List({Configured("kept", R"({"onvif": {"channels": 2}, "stream": [{"path": "/one"}, {"path": "/two"}]})")})};
  const TestRecorder recorder_;
  Json::Value params_ = GenericParams("ONVIF", cameras_.Port("kept"), kSecret);
};

TEST_F(KeptCamera, IsAskedOnceForEachOfItsChannels) {
  params_["camCapCmd"] = 2;
  EXPECT_EQ(Document(recorder_, params_)["ResoList"].size(), 0U) << "nothing is kept yet";
  EXPECT_EQ(Asked(), 0);
  EXPECT_EQ(Code("CameraTest"), 0);
  const int once = Asked();
  EXPECT_GT(once, 0);
  EXPECT_EQ(Document(recorder_, params_)["ChanlList"], List({"1", "2"}));
  EXPECT_EQ(Code("CameraTest"), 0);
  EXPECT_EQ(Asked(), once);
  EXPECT_EQ(Code("GetSnapshot", "2"), 0);
  const int twice = Asked();
  EXPECT_GT(twice, once) << "what is kept is about channel 1";
  EXPECT_EQ(Code("CameraTest"), 0) << "channel 1 is kept still";
  EXPECT_EQ(Asked(), twice);
  EXPECT_EQ(Code("CameraTest", "3"), 465);
  recorder_.AddCamera("ONVIF", "Generic", cameras_.Port("kept"), "admin", kSecret);
  EXPECT_EQ(recorder_.Get("EnumExistedCamCap").json["data"]["camCap"][0]["camCap"]["defReso"], "640x480");
}

TEST_F(KeptCamera, IsAskedAgainAfterADay) {
  EXPECT_EQ(Code("CameraTest"), 0);
  Age();
  params_["camPassWord"] = "wrong";
  EXPECT_EQ(Code("CameraTest"), 464) << "an old file does not hide a refused login";
  EXPECT_EQ(Refused(cameras_, "kept"), 1);
  params_["camPassWord"] = kSecret;
  const int before = Asked();
  EXPECT_EQ(Code("CameraTest"), 0);
  EXPECT_GT(Asked(), before) << "a day is over";
}

TEST_F(KeptCamera, IsAskedAgainWhenItsFileIsBroken) {
  EXPECT_EQ(Code("CameraTest"), 0);
  std::ofstream(CameraFile(recorder_)) << "{ half a fi";
  EXPECT_EQ(Code("GetSnapshot"), 0);
}

TEST(HandedOnModels, TellWhatTheCameraSaidAndNothingPrivate) {
  constexpr char kTwo[] = R"({"onvif": {"channels": 2}, "stream": [{"path": "/ch01/live"}, {"path": "/ch02/live"}]})";
  constexpr char kSecretPath[] = R"({"onvif": {}, "stream": {"path": "/user=admin_password=x_channel=1.sdp"}})";
  const SimCameras cameras(List({Configured("gate", kTwo), Configured("yard", kSecretPath)}));
  const TestRecorder recorder;
  const TempFolder folder;
  for (const char* name : {"gate", "yard"}) {
    recorder.AddCamera("ONVIF", "Generic", cameras.Port(name), "admin", kSecret);
  }
  EXPECT_THAT(recorder.Control({"models", "export", "1"}).output, testing::HasSubstr("test it first"));
  Json::Value params = GenericParams("ONVIF", cameras.Port("gate"), kSecret);
  for (const char* channel : {"2", "1"}) {
    params["camChannel"] = channel;
    EXPECT_EQ(CodeOf(recorder, "CameraTest", params), 0);
  }
  const Finished exported = recorder.Control({"models", "export", "1"});
  EXPECT_EQ(exported.status, 0) << exported.output;
  for (const char* text : {"127.0.0.1", "admin", kSecret, "51AC0DE5", "oken", "onvifMedia"}) {
    EXPECT_THAT(exported.output, testing::Not(testing::HasSubstr(text)));
  }
  const Json::Value model = ParseJson(exported.output)["models"][0];
  EXPECT_EQ(model["name"], "gate");
  EXPECT_EQ(model["stream"]["path"], "/ch{channel:02}/live");
  EXPECT_EQ(model["channels"]["values"].size(), 2U);
  EXPECT_EQ(model["facts"]["resolutions"], "camera");

  const Finished import = recorder.Control({"models", "import", folder.Write("gate.json", exported.output)});
  EXPECT_EQ(import.status, 0) << import.output;
  params = CameraParams(cameras.Port("gate"), kSecret, "Simcam gate");
  params["camChannel"] = "2";
  EXPECT_EQ(CodeOf(recorder, "CameraTest", params), 0) << recorder.Log();

  EXPECT_EQ(recorder.Control({"test", "2"}).status, 0);
  const Finished refused = recorder.Control({"models", "export", "2"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.output, testing::HasSubstr("the path of the main stream cannot be handed on: it seems to hold"));
}

TEST(HandedOnModels, AreOfTestedPathsWhereTheUserGaveThem) {
  const SimCameras cameras(List({Configured("good", R"({"stream": {"path": "/live"}})")}));
  const TestRecorder recorder;
  recorder.AddCamera("User", "", cameras.Port("good"), "admin", kSecret, "1", "/live");
  const auto exportAs = [&](const char* codec) {
    return recorder.Control({"models", "export", "1", "--vendor", "Acme", "--model", "X", "--codec", codec});
  };
  const Json::Value file = ParseJson(exportAs("H.264").output);
  EXPECT_EQ(file["models"][0]["stream"]["path"], "/live");
  EXPECT_EQ(file["sources"]["user"]["by"], "user");
  EXPECT_THAT(exportAs("H.265").output, testing::HasSubstr("the camera sends no H.265 there"));
  EXPECT_EQ(recorder.Control({"models", "export", "1"}).status, 2);
}

}  // namespace
