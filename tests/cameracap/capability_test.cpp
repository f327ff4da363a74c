#include "platform/utility.h"
#include "tests/cameracap/request.h"

using scripted::kNoObject;
using scripted::kNoWrapper;
using scripted::kThrow;

namespace {

// --- Model list and existing capabilities ---------------------------------------------------------------------------

TEST_F(ModuleTest, ModelListIsAlwaysASuccess) {
  Script("GetCamModelEnumInfo", List(true), List(false, "half a list"));
  Send("CameraModelEnum");
  Send("CameraModelEnum");
  EXPECT_EQ(Transcript(), Lines(R"(
    GetCamModelEnumInfo([]); SetSuccess({"cameraModel":[],"success":true}); GetCamModelEnumInfo([])
    SetSuccess({"cameraModel":["half a list"],"success":false})
  )"));
}

TEST_F(ModuleTest, ExistingCapabilitiesAreAllOrAnError) {
  Script("EnumExistedCameraCap", List(true, "a", "b"), List(false, "half a list"));
  Send("EnumExistedCamCap");
  Send("EnumExistedCamCap");
  EXPECT_EQ(Transcript(), Lines(R"(
    EnumExistedCameraCap([]); SetSuccess({"camCap":["a","b"]}); EnumExistedCameraCap([])
    )" + Error(400)));
  EXPECT_EQ(Reads(), "");
}

// --- Capability of a model ------------------------------------------------------------------------------------------

struct CamCapTest : ModuleTest {
  void SetUp() override {
    ModuleTest::SetUp();
    Script("LoadCapability", 0);
    Script("GetCamCap", List(-1, Parse(R"({"id":"X100"})")));  // its result is nobody's business
  }
};

TEST_F(CamCapTest, AsksTheLibrary) {
  Send("CamCap");
  Send("CamCap", {{"vendor", "user"}, {"model", "X100"}, {"channel", "2"}});
  EXPECT_EQ(Transcript(), Lines(R"(
    LoadCapability(1, "", "", "0", ""); GetCamCap("", ""); SetSuccess({"camCap":[{"id":"X100"}]})
    LoadCapability(1, "user", "X100", "2", ""); GetCamCap("user", "X100"); SetSuccess({"camCap":[{"id":"X100"}]})
  )"));
}

TEST_F(CamCapTest, ReadsInOrder) {
  Send("CamCap", {{"vendor", "User"}});
  EXPECT_EQ(Reads(), Lines(R"(
    GetParam("vendor", ""); GetParam("model", ""); GetParam("channel", "0")
  )"));
}

TEST_F(CamCapTest, FailedLoadIsAnError) {
  Script("LoadCapability", -3);
  Send("CamCap");
  EXPECT_EQ(Transcript(), Lines(R"(
    LoadCapability(1, "", "", "0", "")
    log cameracap:395 HandleCamCap "Failed to get camera cap.\n"
    )" + Error(400)));
}

TEST_F(CamCapTest, CallThatCannotBeMadeIsNoError) {
  Script("LoadCapability", kNoObject);
  Send("CamCap");
  EXPECT_EQ(Transcript(), Lines(R"(
    )" + NullObject(416, "LoadCapability") +
                                R"(
    GetCamCap("", ""); SetSuccess({"camCap":[{"id":"X100"}]})
  )"));
}

TEST_F(CamCapTest, ExceptionPassesThrough) {
  Script("GetCamCap", kThrow);
  EXPECT_THROW(Send("CamCap"), std::runtime_error);
  EXPECT_EQ(scripted::Made("CamCapHandler"), 1);
}

TEST_F(CamCapTest, UserDefinedCameraHasAFixedDocument) {
  Json::Value capability = Parse(R"({
    "id": "User Define", "VideoSvr": false, "ChanlList": [], "defChanl": "1", "cntChanl": 1, "MDCap": false, "DINum": 0,
    "multiDI": false, "setDICap": false, "resIndCap": false, "fpsIndCap": false, "qualIndCap": false, "defFPS": "",
    "defReso": "", "defQual": "", "cntFPS": 0, "cntRes": 0, "cntQual": 0, "videoCap": 1, "FPSList": [], "ResoList": [],
    "QualList": [], "audioCap": false, "AudioCHList": [], "MDList": [], "singleStream": true, "defUser": "",
    "defPass": "", "fisheyeType": 0, "stmFisheyeType": 0, "defRtspProtocol": 4, "defCodecOptimization": 1,
    "defRtspKeepAlive": 1, "streamCnt": 0, "hasEdgeStg": false,
    "videoCapList": [{"vt": "MJPEG", "stList": ["HTTP"]}, {"vt": "H.264", "stList": ["RTSP"]},
                     {"vt": "MPEG4", "stList": ["RTSP"]}]})");
  capability["rtspProtocolCap"] = 11U;
  capability["codecOptimizationCap"] = 0U;
  Json::Value expected;
  expected["camCap"].append(capability);
  EXPECT_EQ(Send("CamCap", {{"vendor", "User"}, {"model", "any"}, {"channel", "9"}}), expected);  // types count
  EXPECT_EQ(Transcript(), "SetSuccess(" + scripted::Compact(expected) + ")\n");
  EXPECT_EQ(scripted::Made("CamCapHandler"), 1);
}

// --- Capability of a camera whose file comes first ------------------------------------------------------------------

const Params kCamera{{"camId", 7},        {"camPort", 80},     {"camIP", "10.0.0.9"},
                     {"camUser", "root"}, {"camPass", "pw"},   {"vendor", "Acme"},
                     {"model", "X100"},   {"camChannel", "9"}, {"camCapCmd", 0}};

struct RemoteRow {
  const char* name;
  Params params;
  Params answers;
  std::string expected;
};
const RemoteRow kRemoteRows[] = {
    {"Obtained", {{"camCapCmd", 6}}, {}, R"(
        GetCamCapFile("10.0.0.9", "root", "pw", "9", "Acme", "X100", 80, 0, 0, "", 6)
        LoadCapability(1, "Acme", "X100", "9", "/cap"); GetCamCap("Acme", "X100")
        SetSuccess({"camCap":[{"id":"X100"}]}))"},
    {"StoredPassword", {{"camPass", gszFakePass}}, {{"GetCamCapFile", 9}}, R"(
        GetCamRealPass(7, "Acme", "X100", "9")
        GetCamCapFile("10.0.0.9", "root", "secret", "9", "Acme", "X100", 80, 0, 0, "", 0)
        )" + Error(457)},
    {"NotQuiteThePlaceholder", {{"camPass", std::string(gszFakePass) + "*"}}, {{"GetCamCapFile", -1}}, R"(
        GetCamCapFile("10.0.0.9", "root", "*********", "9", "Acme", "X100", 80, 0, 0, "", 0)
        )" + Error(457)},
    {"LoadFails", {}, {{"LoadCapability", 2}}, R"(
        GetCamCapFile("10.0.0.9", "root", "pw", "9", "Acme", "X100", 80, 0, 0, "", 0)
        LoadCapability(1, "Acme", "X100", "9", "/cap")
        )" + Error(400)},
    {"SubstitutedButRead", {}, {{"GetCamCapFile", List(1, "/old")}}, R"(
        GetCamCapFile("10.0.0.9", "root", "pw", "9", "Acme", "X100", 80, 0, 0, "", 0)
        LoadCapability(1, "Acme", "X100", "9", "/old"); GetCamCap("Acme", "X100")
        )" + Error(459)},
    {"SubstitutedAndLoadFails", {}, {{"GetCamCapFile", 1}, {"LoadCapability", -1}}, R"(
        GetCamCapFile("10.0.0.9", "root", "pw", "9", "Acme", "X100", 80, 0, 0, "", 0)
        LoadCapability(1, "Acme", "X100", "9", "")
        )" + Error(400)},
    {"KeptFileWithoutChannelCheck", {{"camCapCmd", 2}, {"vendor", "PSIA"}, {"camPass", gszFakePass}}, {}, R"(
        GetCamRealPass(7, "PSIA", "X100", "9"); GetRealCapFilePath("PSIA", "10.0.0.9", 80, "")
        LoadCapability(1, "PSIA", "X100", "9", "/kept"); GetCamCap("PSIA", "X100")
        SetSuccess({"camCap":[{"id":"X100"}]}))"},
    {"KeptFileDoesNotLoad", {{"camCapCmd", 2}}, {{"LoadCapability", 1}}, R"(
        GetRealCapFilePath("Acme", "10.0.0.9", 80, ""); LoadCapability(1, "Acme", "X100", "9", "/kept")
        )" + Error(400)},
    {"ChannelListed", {{"vendor", "PSIA"}, {"camChannel", "2"}}, {}, R"(
        GetCamCapFile("10.0.0.9", "root", "pw", "2", "PSIA", "X100", 80, 0, 0, "", 0)
        LoadCapability(1, "PSIA", "X100", "2", "/cap"); GetChannelList(); GetCamCap("PSIA", "X100")
        SetSuccess({"camCap":[{"id":"X100"}]}))"},
    {"ChannelNotListed", {{"vendor", "PSIA"}}, {}, R"(
        GetCamCapFile("10.0.0.9", "root", "pw", "9", "PSIA", "X100", 80, 0, 0, "", 0)
        LoadCapability(1, "PSIA", "X100", "9", "/cap"); GetChannelList(); GetDefaultChannel()
        LoadCapability(1, "PSIA", "X100", "1", "/cap"); GetCamCap("PSIA", "X100")
        SetSuccess({"camCap":[{"id":"X100"}]}))"},
    {"ChannelListMissing", {{"vendor", "PSIA"}, {"camChannel", "2"}}, {{"GetChannelList", kNoWrapper}}, R"(
        GetCamCapFile("10.0.0.9", "root", "pw", "2", "PSIA", "X100", 80, 0, 0, "", 0)
        LoadCapability(1, "PSIA", "X100", "2", "/cap")
        )" + NotRegistered(517, "GetChannelList") + R"(
        GetDefaultChannel(); LoadCapability(1, "PSIA", "X100", "1", "/cap"); GetCamCap("PSIA", "X100")
        SetSuccess({"camCap":[{"id":"X100"}]}))"},
    {"NoChannelCheckForOtherCase", {{"vendor", "psia"}}, {}, R"(
        GetCamCapFile("10.0.0.9", "root", "pw", "9", "psia", "X100", 80, 0, 0, "", 0)
        LoadCapability(1, "psia", "X100", "9", "/cap"); GetCamCap("psia", "X100")
        SetSuccess({"camCap":[{"id":"X100"}]}))"},
};

struct CamCapRemoteTest : RowTest<RemoteRow> {
  void SetUp() override {
    ModuleTest::SetUp();
    Script("GetCamRealPass", "secret");
    Script("GetRealCapFilePath", "/kept");
    Script("GetCamCapFile", List(0, "/cap"));
    Script("LoadCapability", 0);
    Script("GetChannelList", List("1", "2"));
    Script("GetDefaultChannel", "1");
    Script("GetCamCap", List(0, Parse(R"({"id":"X100"})")));
  }
};

TEST_P(CamCapRemoteTest, Goes) {
  for (const auto& [function, answer] : GetParam().answers) Script(function, answer);
  Send("CamCapRemote", With(kCamera, GetParam().params));
  EXPECT_EQ(Transcript(), Lines(GetParam().expected));
}
INSTANTIATE_TEST_SUITE_P(Way, CamCapRemoteTest, testing::ValuesIn(kRemoteRows), ByName());

TEST_F(CamCapRemoteTest, FailedFetchNamesItsCause) {
  for (const auto& [result, code] : {std::pair{2, 458}, {3, 460}, {4, 461}, {5, 457}, {7, 457}, {-1, 457}, {-4, 457}}) {
    scripted::Reset();
    Script("GetCamCapFile", List(result, "/cap"));
    Send("CamCapRemote", kCamera);
    EXPECT_EQ(
        Transcript(),
        "GetCamCapFile(\"10.0.0.9\", \"root\", \"pw\", \"9\", \"Acme\", \"X100\", 80, 0, 0, \"\", 0)\n" + Error(code))
        << result;
  }
}

TEST_F(CamCapRemoteTest, SecondLoadMayFail) {
  Script("LoadCapability", 0, 5);
  Send("CamCapRemote", With(kCamera, {{"vendor", "PSIA"}}));
  EXPECT_EQ(Transcript(), Lines(R"(
    GetCamCapFile("10.0.0.9", "root", "pw", "9", "PSIA", "X100", 80, 0, 0, "", 0)
    LoadCapability(1, "PSIA", "X100", "9", "/cap"); GetChannelList(); GetDefaultChannel()
    LoadCapability(1, "PSIA", "X100", "1", "/cap")
    )" + Error(400)));
}

TEST_F(CamCapRemoteTest, ReadsInOrder) {
  Send("CamCapRemote", {{"camPort", 80}, {"camCapCmd", 1}});
  EXPECT_EQ(Reads(), Lines(R"(
    GetParam("camId", 0); GetParam("camPort", ""); GetParam("camIP", ""); GetParam("camUser", "")
    GetParam("camPass", ""); GetParam("vendor", ""); GetParam("model", ""); GetParam("camChannel", "")
    GetParam("camCapCmd", "")
  )"));
}

TEST_F(CamCapRemoteTest, NeedsPortAndCommandBeforeAnythingElse) {
  for (const char* missing : {"camPort", "camCapCmd"}) {
    Params params = With(kCamera, {{"camPass", gszFakePass}});
    params.erase(missing);
    EXPECT_THROW(Send("CamCapRemote", params), Json::Exception) << missing;
  }
  EXPECT_EQ(Transcript(), "");
}

}  // namespace
