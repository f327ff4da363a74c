#include "platform/utility.h"
#include "tests/cameracap/request.h"

using scripted::kNoObject;
using scripted::kThrow;

namespace {

const Params kCamera{{"camVideoType", "H.264"}, {"camStreamingType", "RTSP"}, {"camId", 7},
                     {"camPort", 80},           {"camIP", "10.0.0.9"},        {"camUserName", "root"},
                     {"camPassWord", "pw"},     {"camModel", "Acme X100"},    {"camChannel", "9"},
                     {"camSourcePath", "/src"}};

struct TestRow {
  const char* name;
  Params params;
  Params answers;
  std::string expected;  ///< after the two type names
};
const TestRow kTestRows[] = {
    {"OwnCheck", {}, {{"VerifyConnection", -7}, {"RetDevApiToRetCV", 5}}, R"(
        IsGenericApi("Acme", "X100"); LoadByParam(1, "10.0.0.9", 80, "root", "pw", "Acme", "X100", "9", "/src")
        IsValid(); NeedsSourcePath(); HasStreamPath(); VerifyConnection(); RetDevApiToRetCV(-7)
        )" + Error(463)},
    {"GivenPath", {{"camPassWord", gszFakePass}}, {{"NeedsSourcePath", true}}, R"(
        GetCamRealPass(7, "Acme", "X100", "9"); IsGenericApi("Acme", "X100")
        LoadByParam(1, "10.0.0.9", 80, "root", "secret", "Acme", "X100", "9", "/src"); IsValid()
        NeedsSourcePath(); CameraVerify("10.0.0.9", 80, "root", "secret", "/src", 3, 2, 4); Verify()
        ~CameraVerify; SetSuccess({"result":0}))"},
    {"StreamPath", {}, {{"HasStreamPath", true}, {"Verify", 15}}, R"(
        IsGenericApi("Acme", "X100"); LoadByParam(1, "10.0.0.9", 80, "root", "pw", "Acme", "X100", "9", "/src")
        IsValid(); NeedsSourcePath(); HasStreamPath(); GetStreamPath("/src", 80)
        CameraVerify("10.0.0.9", 8554, "root", "pw", "/live", 3, 2, 4); Verify(); ~CameraVerify
        )" + Error(467)},
    {"NoStreamPath", {}, {{"HasStreamPath", true}, {"GetStreamPath", List(2, "/live", 8554)}}, R"(
        IsGenericApi("Acme", "X100"); LoadByParam(1, "10.0.0.9", 80, "root", "pw", "Acme", "X100", "9", "/src")
        IsValid(); NeedsSourcePath(); HasStreamPath(); GetStreamPath("/src", 80)
        )" + Error(468)},
    {"CallsThatCannotBeMade",
     {},
     {{"NeedsSourcePath", kNoObject}, {"HasStreamPath", true}, {"GetStreamPath", scripted::kWrongSignature}},
     R"(
        IsGenericApi("Acme", "X100"); LoadByParam(1, "10.0.0.9", 80, "root", "pw", "Acme", "X100", "9", "/src")
        IsValid()
        )" +
         NullObject(514, "NeedsSourcePath") + R"(
        HasStreamPath()
        )" +
         NotRegistered(479, "GetStreamPath") + R"(
        CameraVerify("10.0.0.9", 80, "root", "pw", "/src", 3, 2, 4); Verify(); ~CameraVerify
        SetSuccess({"result":0}))"},
    {"NotValid", {}, {{"IsValid", false}}, R"(
        IsGenericApi("Acme", "X100"); LoadByParam(1, "10.0.0.9", 80, "root", "pw", "Acme", "X100", "9", "/src")
        IsValid()
        )" + Error(468)},
    {"GenericWithStoredPassword", {{"camPassWord", gszFakePass}}, {{"IsGenericApi", true}, {"GetCamCapFile", 1}}, R"(
        GetCamRealPass(7, "Acme", "X100", "9"); IsGenericApi("Acme", "X100")
        GetCamCapFile("10.0.0.9", "root", "secret", "9", "Acme", "X100", 80, 0, 0, "", 0)
        LoadByParam(1, "10.0.0.9", 80, "root", "secret", "Acme", "X100", "9", "/src"); IsValid()
        NeedsSourcePath(); HasStreamPath(); VerifyConnection(); RetDevApiToRetCV(0); SetSuccess({"result":0}))"},
    {"GenericLoginRefused", {}, {{"IsGenericApi", true}, {"GetCamCapFile", 4}}, R"(
        IsGenericApi("Acme", "X100")
        GetCamCapFile("10.0.0.9", "root", "pw", "9", "Acme", "X100", 80, 0, 0, "", 0)
        )" + Error(464)},
    {"GenericUnreachable", {}, {{"IsGenericApi", true}, {"GetCamCapFile", 2}}, R"(
        IsGenericApi("Acme", "X100")
        GetCamCapFile("10.0.0.9", "root", "pw", "9", "Acme", "X100", 80, 0, 0, "", 0)
        )" + Error(468)},
    {"ChannelReplaced", {{"camModel", "PSIA X100"}}, {{"IsGenericApi", true}}, R"(
        IsGenericApi("PSIA", "X100")
        GetCamCapFile("10.0.0.9", "root", "pw", "9", "PSIA", "X100", 80, 0, 0, "", 0)
        LoadCapability(1, "PSIA", "X100", "9", "/cap"); GetChannelList(); GetDefaultChannel()
        LoadByParam(1, "10.0.0.9", 80, "root", "pw", "PSIA", "X100", "1", "/src"); IsValid(); NeedsSourcePath()
        HasStreamPath(); VerifyConnection(); RetDevApiToRetCV(0); SetSuccess({"result":0}))"},
    {"ChannelKept", {{"camModel", "PSIA X100"}, {"camChannel", "2"}}, {{"IsGenericApi", true}, {"IsValid", false}}, R"(
        IsGenericApi("PSIA", "X100")
        GetCamCapFile("10.0.0.9", "root", "pw", "2", "PSIA", "X100", 80, 0, 0, "", 0)
        LoadCapability(1, "PSIA", "X100", "2", "/cap"); GetChannelList()
        LoadByParam(1, "10.0.0.9", 80, "root", "pw", "PSIA", "X100", "2", "/src"); IsValid()
        )" + Error(468)},
    {"CapabilityNotLoaded", {{"camModel", "PSIA X100"}}, {{"IsGenericApi", true}, {"LoadCapability", 1}}, R"(
        IsGenericApi("PSIA", "X100")
        GetCamCapFile("10.0.0.9", "root", "pw", "9", "PSIA", "X100", 80, 0, 0, "", 0)
        LoadCapability(1, "PSIA", "X100", "9", "/cap")
        log cameracap:618 HandleCameraTest "Get camera capability failed.\n"
        )" + Error(468)},
};

struct CameraTest : RowTest<TestRow> {
  void SetUp() override {
    ModuleTest::SetUp();
    for (const char* flag : {"IsGenericApi", "NeedsSourcePath", "HasStreamPath"}) Script(flag, false);
    for (const char* success : {"LoadCapability", "VerifyConnection", "RetDevApiToRetCV", "Verify"}) Script(success, 0);
    Script("GetVideoType", 3);
    Script("GetStreamingType", 2);
    Script("GetCamRealPass", "secret");
    Script("GetCamCapFile", List(0, "/cap"));
    Script("GetChannelList", List("1", "2"));
    Script("GetDefaultChannel", "1");
    Script("IsValid", true);
    Script("GetStreamPath", List(0, "/live", 8554));
  }
};

TEST_P(CameraTest, Goes) {
  for (const auto& [function, answer] : GetParam().answers) Script(function, answer);
  Send("CameraTest", With(kCamera, GetParam().params));
  EXPECT_EQ(Transcript(), "GetVideoType(\"H.264\")\nGetStreamingType(\"RTSP\")\n" + Lines(GetParam().expected));
}
INSTANTIATE_TEST_SUITE_P(Way, CameraTest, testing::ValuesIn(kTestRows), ByName());

TEST_F(CameraTest, ResultNamesTheCause) {
  for (const auto& [result, code] : {std::pair{4, 462},
                                     {5, 463},
                                     {6, 464},
                                     {7, 465},
                                     {8, 466},
                                     {15, 467},
                                     {1, 468},
                                     {2, 468},
                                     {3, 468},
                                     {9, 468},
                                     {14, 468},
                                     {16, 468},
                                     {-4, 468}}) {
    Script("RetDevApiToRetCV", result);
    Send("CameraTest", kCamera);
    const std::string lines = Transcript();
    EXPECT_EQ(lines.substr(lines.rfind("SetError")), Error(code)) << result;
  }
}

TEST_F(CameraTest, SplitsTheModelAtItsFirstBlank) {
  for (const auto& [text, vendor, model] : {std::tuple{"Acme X100", "Acme", "X100"},
                                            {"Acme  X 1", "Acme", " X 1"},
                                            {"Acme", "", ""},
                                            {" X100", "", "X100"},
                                            {"Acme ", "Acme", ""},
                                            {"", "", ""},
                                            {"Acme\tX100", "", ""}}) {
    scripted::Reset();
    SetUp();
    Send("CameraTest", With(kCamera, {{"camModel", text}}));
    EXPECT_NE(Transcript().find("IsGenericApi(\"" + std::string(vendor) + "\", \"" + model + "\")"), std::string::npos)
        << text;
  }
}

TEST_F(CameraTest, ReadsInOrderAndMissingIsZeroOrEmpty) {
  Send("CameraTest", {{"camPassWord", gszFakePass}});
  EXPECT_EQ(Reads(), Lines(R"(
    GetParam("camVideoType", null); GetParam("camStreamingType", null); GetParam("camId", null)
    GetParam("camPort", null); GetParam("camIP", null); GetParam("camUserName", null)
    GetParam("camPassWord", null); GetParam("camModel", null); GetParam("camChannel", null)
    GetParam("camSourcePath", null)
  )"));
  EXPECT_EQ(Transcript(), Lines(R"(
    GetVideoType(""); GetStreamingType(""); GetCamRealPass(0, "", "", ""); IsGenericApi("", "")
    LoadByParam(1, "", 0, "", "secret", "", "", "", ""); IsValid(); NeedsSourcePath(); HasStreamPath()
    VerifyConnection(); RetDevApiToRetCV(0); SetSuccess({"result":0})
  )"));
}

TEST_F(CameraTest, ExceptionsPassThrough) {
  EXPECT_THROW(Send("CameraTest", With(kCamera, {{"camPort", "eighty"}})), Json::Exception);
  EXPECT_EQ(Transcript().find("LoadByParam"), std::string::npos);
  Script("NeedsSourcePath", true);
  Script("Verify", kThrow);
  EXPECT_THROW(Send("CameraTest", kCamera), std::runtime_error);
  EXPECT_EQ(scripted::Made("CameraVerify"), 1);
}

}  // namespace
