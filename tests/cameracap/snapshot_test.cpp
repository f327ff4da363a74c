#include "cameracap/snapshot.h"

#include "platform/utility.h"
#include "tests/cameracap/request.h"

using scripted::kNoObject;
using scripted::kThrow;

namespace {

struct PictureTest : ModuleTest {
  void SetUp() override {
    ModuleTest::SetUp();
    for (const char* flag : {"IsGenericApi", "NeedsSourcePath"}) Script(flag, false);
    for (const char* success : {"LoadCapability", "SelectVideoType"}) Script(success, 0);
    Script("GetCamConnStatus", 1);
    Script("GetCamRealPass", "secret");
    Script("GetRealCapFilePath", "/kept");
    Script("GetChannelList", List("1", "2"));
    Script("GetDefaultChannel", "1");
    Script("IsValid", true);
    Script("GetListForCodec", List("640x480", "320x240"));
    Script("GetVideoType", 3);
    Script("GetSnapshotPath", List(0, "/shot", 8080, 1));
    Script("SnapshotGetFromAPI", List(0, "jpg"));
    Script("ReadContentFromFileToBuf", List(0, "png"));
    Script("HttpBase64EncodeUnsigned", "base64");
    Script("GetJpegReso", List(1280, 720));
  }
};

// --- Acquisition ----------------------------------------------------------------------------------------------------

struct AcquisitionRow {
  const char* name;
  Params answers;
  int result;
  std::string expected;
};
const AcquisitionRow kAcquisitionRows[] = {
    {"Interface", {}, 0, R"(
        NeedsSourcePath(); GetSnapshotPath("", 80, 0)
        SnapshotGetFromAPI("10.0.0.9", 8080, "root", "pw", "640x480", 3))"},
    {"InterfaceFails", {{"SnapshotGetFromAPI", 9}}, 9, R"(
        NeedsSourcePath(); GetSnapshotPath("", 80, 0)
        SnapshotGetFromAPI("10.0.0.9", 8080, "root", "pw", "640x480", 3))"},
    {"SelectsTheCodec",
     {{"NeedsSourcePath", true}, {"SelectVideoType", -1}, {"GetSnapshotPath", List(0, "/", 81, 5)}},
     0,
     R"(
        NeedsSourcePath(); SelectVideoType(3, 0); GetSnapshotPath("", 80, 0)
        SnapshotGetFromAPI("10.0.0.9", 81, "root", "pw", "640x480", 3))"},
    {"Stream", {{"GetSnapshotPath", List(0, "/live", 554, 4)}, {"NextPartInfo", 1}}, -1, R"(
        NeedsSourcePath(); GetSnapshotPath("", 80, 0)
        RtpFetch("10.0.0.9", 554, "/live", "root", "pw", false, "", 2, 4, 0, "", ""); MP4Stream(1, 7)
        NextPartInfo(null, 0)
        log cameracap:221 GetImgByRTP "Get rtp header failed.\n"
        ~MP4Stream; ~RtpFetch)"},
    {"NoPath", {{"GetSnapshotPath", List(-2, "/live", 554, 4)}}, -1, R"(
        NeedsSourcePath(); GetSnapshotPath("", 80, 0)
        log cameracap:275 GetSnapshot "Failed to get snapshot path.\n")"},
    {"CallsThatCannotBeMade", {{"NeedsSourcePath", kNoObject}, {"GetSnapshotPath", kNoObject}}, 0, R"(
        )" + NullObject(514, "NeedsSourcePath") + R"(
        )" + NullObject(456, "GetSnapshotPath") + R"(
        SnapshotGetFromAPI("10.0.0.9", 80, "root", "pw", "640x480", 3))"},
};
struct AcquisitionTest : RowTestOf<PictureTest, AcquisitionRow> {};
TEST_P(AcquisitionTest, Goes) {
  for (const auto& [function, answer] : GetParam().answers) Script(function, answer);
  DeviceAPIHandler api;
  unsigned char* jpeg = nullptr;
  int jpegSize = 77;
  EXPECT_EQ(GetSnapshot("10.0.0.9", 80, "root", "pw", api, "640x480", &jpeg, &jpegSize, "H.264", 7), GetParam().result);
  EXPECT_EQ(Transcript(), "GetVideoType(\"H.264\")\n" + Lines(GetParam().expected));
  EXPECT_EQ(jpegSize, GetParam().result == 0 ? 3 : std::string(GetParam().name) == "Stream" ? 0 : 77);
  std::free(jpeg);
}
INSTANTIATE_TEST_SUITE_P(Way, AcquisitionTest, testing::ValuesIn(kAcquisitionRows), ByName());

TEST_F(PictureTest, OnlyKindFourIsTheStream) {
  for (const int kind : {-1, 0, 1, 2, 3, 5, 8}) {
    Script("GetSnapshotPath", List(0, "/shot", 8080, kind));
    Send("GetSnapshot", {{"jsonResponse", true}});
  }
  EXPECT_EQ(scripted::Made("RtpFetch"), 0);
}

// --- The snapshot request -------------------------------------------------------------------------------------------

const Params kCamera{{"camId", 7},
                     {"camPort", 80},
                     {"jsonResponse", true},
                     {"camIP", "10.0.0.9"},
                     {"camUserName", "root"},
                     {"camPassword", "pw"},
                     {"camSourcePath", "/src"},
                     {"camModel", "Acme X100"},
                     {"camChannel", "2"},
                     {"camVideoType", "H.264"}};
const char kDefaultPicture[] = R"(
        ReadContentFromFileToBuf("../images/add_camera_default.png", true); HttpBase64EncodeUnsigned("png")
        SetSuccess({"contentType":"jpeg","img":"base64"}))";
const char kUntilSnapshot[] = R"(
        GetCamConnStatus(7); IsGenericApi("Acme", "X100"); LoadCapability(1, "Acme", "X100", "2", "")
        GetChannelList(); LoadByParam(1, "10.0.0.9", 80, "root", "pw", "Acme", "X100", "2", "/src"); IsValid()
        NeedsSourcePath(); GetListForCodec(3); GetVideoType("H.264"); NeedsSourcePath()
        GetSnapshotPath("", 80, 0)
        )";
const char kThroughInterface[] = R"(SnapshotGetFromAPI("10.0.0.9", 8080, "root", "pw", "640x480", 3)
        )";
const char kSnapshotFailed[] = R"(log cameracap:792 HandleCameraSnapshot "Failed to get camera snapshot.\n")";

struct SnapshotRow {
  const char* name;
  Params params;
  Params answers;
  std::string expected;
};
const SnapshotRow kSnapshotRows[] = {
    {"Picture", {}, {}, std::string(kUntilSnapshot) + kThroughInterface + R"(
        HttpBase64EncodeUnsigned("jpg"); SetSuccess({"contentType":"jpeg","img":"base64"}))"},
    {"Disabled", {}, {{"GetCamConnStatus", 6}}, std::string("GetCamConnStatus(7)") + kDefaultPicture},
    {"CapabilityFails", {{"camPassword", gszFakePass}}, {{"LoadCapability", 1}}, std::string(R"(
        GetCamConnStatus(7); GetCamRealPass(7, "Acme", "X100", "2"); IsGenericApi("Acme", "X100")
        LoadCapability(1, "Acme", "X100", "2", "")
        log cameracap:746 HandleCameraSnapshot "Get camera capability failed.\n")") + kDefaultPicture},
    {"GenericWithOtherChannel",
     {{"camChannel", "9"}, {"camPassword", gszFakePass}},
     {{"IsGenericApi", true}, {"IsValid", false}},
     std::string(R"(
        GetCamConnStatus(7); GetCamRealPass(7, "Acme", "X100", "9"); IsGenericApi("Acme", "X100")
        GetRealCapFilePath("Acme", "10.0.0.9", 80, ""); LoadCapability(1, "Acme", "X100", "9", "/kept")
        GetChannelList(); GetDefaultChannel()
        LoadByParam(1, "10.0.0.9", 80, "root", "secret", "Acme", "X100", "1", "/src"); IsValid()
        log cameracap:770 HandleCameraSnapshot "Failed to get camera API.\n")") +
         kDefaultPicture},
    {"UserDefinedBySourcePath", {{"camModel", "User Define"}, {"camId", 0}}, {{"NeedsSourcePath", true}}, R"(
        LoadByParam(1, "10.0.0.9", 80, "root", "pw", "User", "Define", "2", "/src"); IsValid(); NeedsSourcePath()
        GetVideoType("H.264"); NeedsSourcePath(); SelectVideoType(3, 0); GetSnapshotPath("", 80, 0)
        SnapshotGetFromAPI("10.0.0.9", 8080, "root", "pw", "", 3); HttpBase64EncodeUnsigned("jpg")
        SetSuccess({"contentType":"jpeg","img":"base64"}))"},
    {"SnapshotFails",
     {},
     {{"SnapshotGetFromAPI", 4}},
     std::string(kUntilSnapshot) + kThroughInterface + kSnapshotFailed + kDefaultPicture},
    {"SnapshotFailsButLeavesAPicture",
     {},
     {{"SnapshotGetFromAPI", List(4, "half")}},
     std::string(kUntilSnapshot) + kThroughInterface + kSnapshotFailed + kDefaultPicture},
    {"SuccessWithoutAPicture",
     {},
     {{"SnapshotGetFromAPI", 0}},
     std::string(kUntilSnapshot) + kThroughInterface + kSnapshotFailed + kDefaultPicture},
    {"SuccessWithAPictureOfNoBytes",
     {},
     {{"SnapshotGetFromAPI", List(0, "")}},
     std::string(kUntilSnapshot) + kThroughInterface + kSnapshotFailed + kDefaultPicture},
    {"NoPath", {}, {{"GetSnapshotPath", 1}}, std::string(kUntilSnapshot) + R"(
        log cameracap:275 GetSnapshot "Failed to get snapshot path.\n"
        )" + kSnapshotFailed + kDefaultPicture},
    {"NoDefaultPicture", {}, {{"GetCamConnStatus", 6}, {"ReadContentFromFileToBuf", -1}}, R"(
        GetCamConnStatus(7); ReadContentFromFileToBuf("../images/add_camera_default.png", true)
        log cameracap:685 GetDefaultSnapshot "Failed to read img[../images/add_camera_default.png]!\n")"},
    {"StreamDecodes", {{"camVideoType", "MPEG2"}}, {{"GetSnapshotPath", List(0, "/live", 554, 4)}}, R"(
        GetCamConnStatus(7); IsGenericApi("Acme", "X100"); LoadCapability(1, "Acme", "X100", "2", "")
        GetChannelList(); LoadByParam(1, "10.0.0.9", 80, "root", "pw", "Acme", "X100", "2", "/src"); IsValid()
        NeedsSourcePath(); GetVideoType("MPEG2"); NeedsSourcePath(); GetSnapshotPath("", 80, 0)
        RtpFetch("10.0.0.9", 554, "/live", "root", "pw", false, "", 2, 4, 0, "", ""); MP4Stream(1, 7)
        NextPartInfo(null, 0); GetVideoFormat(1); Init(1, 1785750887, null); GetImgContentInfo()
        GetCurTimestamp(); MediaUnit #1(2); #1.SetPTS(9); #1.SetDTS(9); #1.SetTimestamp(9); FetchContent(2)
        Packetize #1("jj"); Packetize(); DoFFMpegGetJpeg(3, null, "key"); ~MediaUnit #2; ~MP4Stream; ~RtpFetch
        HttpBase64EncodeUnsigned("decoded"); SetSuccess({"contentType":"jpeg","img":"base64"}))"},
};

struct SnapshotTest : RowTestOf<PictureTest, SnapshotRow> {
  void SetUp() override {
    PictureTest::SetUp();
    Script("NextPartInfo", 0);
    Script("GetVideoFormat", List(0, 1, 0x6a706567, ""));
    Script("Init", List(0, true));
    Script("GetImgContentInfo", List(2, 0, 9));
    Script("GetCurTimestamp", 9);
    Script("FetchContent", List(0, "jj"));
    Script("Packetize", List(2, "key"), Json::Value());
    Script("DoFFMpegGetJpeg", List(0, "decoded"));
  }
};
TEST_P(SnapshotTest, AnswersInJson) {
  for (const auto& [function, answer] : GetParam().answers) Script(function, answer);
  testing::internal::CaptureStdout();
  Send("GetSnapshot", With(kCamera, GetParam().params));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(Transcript(), Lines(GetParam().expected));
}
INSTANTIATE_TEST_SUITE_P(Way, SnapshotTest, testing::ValuesIn(kSnapshotRows), ByName());

struct RawRow {
  const char* name;
  Params answers;
  std::string expected;  ///< on standard output
};
const RawRow kRawRows[] = {
    {"Picture",
     {{"SnapshotGetFromAPI", List(0, std::string("j\0p\ng", 5))}},
     "Content-type: image/jpeg\r\nContent-length: 5\r\n\r\n" + std::string("j\0p\ng", 5)},
    {"Default", {{"SnapshotGetFromAPI", 1}}, "Content-type: image/jpeg\r\nContent-length: 3\r\n\r\npng"},
    {"NoDefault", {{"SnapshotGetFromAPI", 1}, {"ReadContentFromFileToBuf", 1}}, ""},
};
struct RawSnapshotTest : RowTestOf<PictureTest, RawRow> {};
TEST_P(RawSnapshotTest, AnswersOnStandardOutput) {
  for (const auto& [function, answer] : GetParam().answers) Script(function, answer);
  Params params = kCamera;
  params.erase("jsonResponse");
  testing::internal::CaptureStdout();
  Send("GetSnapshot", params);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), GetParam().expected);
  EXPECT_EQ(Transcript().find("Set"), std::string::npos);
  EXPECT_EQ(Transcript().find("Base64"), std::string::npos);
}
INSTANTIATE_TEST_SUITE_P(Way, RawSnapshotTest, testing::ValuesIn(kRawRows), ByName());

TEST_F(PictureTest, SettingIsTheFirstOfTheCodecs) {
  for (const auto& [name, number] :
       {std::pair{"MJPEG", 1}, {"MPEG4", 2}, {"H.264", 3}, {"MXPEG", 5}, {"MPEG2", 0}, {"mjpeg", 0}, {"", 0}}) {
    scripted::Reset();
    SetUp();
    Send("GetSnapshot", With(kCamera, {{"camVideoType", name}}));
    EXPECT_EQ(Transcript().find("GetListForCodec(" + std::to_string(number) + ")") != std::string::npos, number != 0);
    EXPECT_EQ(Transcript().find("GetListForCodec(") != std::string::npos, number != 0) << name;
    EXPECT_EQ(Transcript().find("\"pw\", \"640x480\", 3)") != std::string::npos, number != 0) << name;
  }
  Script("GetListForCodec", List());
  Send("GetSnapshot", kCamera);
  EXPECT_NE(Transcript().find("\"pw\", \"\", 3)"), std::string::npos);
}

TEST_F(PictureTest, SnapshotReadsInOrder) {
  Script("GetListForCodec", List());
  testing::internal::CaptureStdout();
  Send("GetSnapshot");
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(Reads(), Lines(R"(
    GetParam("camId", null); GetParam("camPort", null); GetParam("jsonResponse", null); GetParam("camIP", null)
    GetParam("camUserName", null); GetParam("camPassword", null); GetParam("camSourcePath", null)
    GetParam("camModel", null); GetParam("camChannel", null); GetParam("camVideoType", null)
  )"));
  EXPECT_EQ(Transcript().find("GetCamConnStatus"), std::string::npos);
}

TEST_F(PictureTest, ExceptionsFreeThePicture) {
  Script("HttpBase64EncodeUnsigned", kThrow);
  EXPECT_THROW(Send("GetSnapshot", kCamera), std::runtime_error);
  Script("GetJpegReso", kThrow);
  EXPECT_THROW(Send("CamCapUserDefineReso", {{"camPort", 80}}), std::runtime_error);
  Script("SnapshotGetFromAPI", List(1, "half"));
  Script("ReadContentFromFileToBuf", kThrow);
  EXPECT_THROW(Send("GetSnapshot", kCamera), std::runtime_error);
}

// --- The size probe -------------------------------------------------------------------------------------------------

const Params kProbed{{"camId", 7},        {"camPort", 80},     {"camIP", "10.0.0.9"},
                     {"camUser", "root"}, {"camPass", "pw"},   {"vendor", "Acme"},
                     {"model", "X100"},   {"camChannel", "9"}, {"camSourcePath", "/src"}};

struct ProbeRow {
  const char* name;
  Params params;
  Params answers;
  std::string expected;  ///< from the load on
};
const ProbeRow kProbeRows[] = {
    {"Measured", {}, {}, R"(
        IsValid(); GetVideoType("MJPEG"); NeedsSourcePath(); GetSnapshotPath("", 80, 0)
        SnapshotGetFromAPI("10.0.0.9", 8080, "root", "pw", "", 3); GetJpegReso("jpg")
        SetSuccess({"userDefineReso":"1280x720"}))"},
    {"NoPicture", {}, {{"GetSnapshotPath", 1}, {"GetJpegReso", List(0, 0)}}, R"(
        IsValid(); GetVideoType("MJPEG"); NeedsSourcePath(); GetSnapshotPath("", 80, 0)
        log cameracap:275 GetSnapshot "Failed to get snapshot path.\n"
        GetJpegReso(null)
        )" + Error(457)},
    {"NoWidth", {{"camVdoType", "H.264"}}, {{"SnapshotGetFromAPI", List(3, "half")}, {"GetJpegReso", List(0, 480)}}, R"(
        IsValid(); GetVideoType("H.264"); NeedsSourcePath(); GetSnapshotPath("", 80, 0)
        SnapshotGetFromAPI("10.0.0.9", 8080, "root", "pw", "", 3); GetJpegReso("half")
        )" + Error(457)},
    {"NoHeight", {}, {{"GetJpegReso", List(640, 0)}}, R"(
        IsValid(); GetVideoType("MJPEG"); NeedsSourcePath(); GetSnapshotPath("", 80, 0)
        SnapshotGetFromAPI("10.0.0.9", 8080, "root", "pw", "", 3); GetJpegReso("jpg")
        )" + Error(457)},
    {"NotValid", {}, {{"IsValid", false}}, R"(
        IsValid()
        log cameracap:534 HandleCamUserDefineReso "Failed to get camera API.\n"
        SetSuccess(null))"},
};
struct ProbeTest : RowTestOf<PictureTest, ProbeRow> {};
TEST_P(ProbeTest, Goes) {
  for (const auto& [function, answer] : GetParam().answers) Script(function, answer);
  Send("CamCapUserDefineReso", With(kProbed, GetParam().params));
  EXPECT_EQ(Transcript(), Lines(R"(
    LoadByParam(1, "10.0.0.9", 80, "root", "pw", "Acme", "X100", "9", "/src")
    )" + GetParam().expected));
}
INSTANTIATE_TEST_SUITE_P(Way, ProbeTest, testing::ValuesIn(kProbeRows), ByName());

TEST_F(PictureTest, ProbeReadsInOrderAndUsesTheStoredPassword) {
  Script("IsValid", false);
  Send("CamCapUserDefineReso", {{"camId", 3}, {"camPort", 8000}, {"camPass", gszFakePass}});
  EXPECT_EQ(Reads(), Lines(R"(
    GetParam("camId", 0); GetParam("camPort", ""); GetParam("camIP", ""); GetParam("camUser", "")
    GetParam("camPass", ""); GetParam("vendor", ""); GetParam("model", ""); GetParam("camChannel", "")
    GetParam("camSourcePath", ""); GetParam("camVdoType", "MJPEG")
  )"));
  EXPECT_EQ(Transcript().substr(0, Transcript().find("IsValid")), Lines(R"(
    GetCamRealPass(3, "", "", ""); LoadByParam(1, "", 8000, "", "secret", "", "", "", "")
  )"));
}

TEST_F(PictureTest, ProbeNeedsAPortBeforeAnythingElse) {
  EXPECT_THROW(Send("CamCapUserDefineReso", {{"camPass", gszFakePass}}), Json::Exception);
  EXPECT_EQ(Transcript(), "");
}

}  // namespace
