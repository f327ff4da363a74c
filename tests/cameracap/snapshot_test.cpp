#include "cameracap/snapshot.h"

#include "platform/utility.h"
#include "tests/cameracap/request.h"

namespace {

// --- The snapshot request -------------------------------------------------------------------------------------------

const std::string kAskPicture = kAdmitted + R"(
  GetParam("camId",null); GetParam("camPort",null); GetParam("jsonResponse",null); GetParam("camIP",null)
  GetParam("camUserName",null); GetParam("camPassword",null); GetParam("camSourcePath",null); GetParam("camModel",null)
  GetParam("camChannel",null); GetParam("camVideoType",null); )";
const std::string kLoadForPicture = R"(
  GetCamConnStatus(7); IsGenericApi("Acme","X100"); LoadCapability(1,"Acme","X100","9",""); GetChannelList()
  LoadByParam(1,"10.0.0.9",80,"root","pw","Acme","X100","9","/src"); IsValid(); NeedsSourcePath(); )";
const std::string kTake = kLoadForPicture + R"(GetListForCodec(3); GetVideoType("H.264"); NeedsSourcePath()
  GetSnapshotPath("",80,0); SnapshotGetFromAPI("10.0.0.9",8080,"root","pw","640x480",3); )";
const std::string kAnswer = R"(HttpBase64EncodeUnsigned("jpg"); SetSuccess({"contentType":"jpeg","img":"base64"}))";
const std::string kRead = R"(ReadContentFromFileToBuf("../images/add_camera_default.png",true); )";
const std::string kDefault = kRead + Swap(kAnswer, "jpg", "png");
const std::string kFailed =
    R"(log("cameracap:792","HandleCameraSnapshot","Failed to get camera snapshot.\n"); )" + kDefault;
const std::string kNoModel = R"(log("cameracap:746","HandleCameraSnapshot","Get camera capability failed.\n"); )";
const std::string kNoPath = R"(log("cameracap:275","GetSnapshot","Failed to get snapshot path.\n"); )";
const std::string kStreamPicture =
    kLoadForPicture + R"(GetVideoType("MPEG2"); NeedsSourcePath(); GetSnapshotPath("",80,0)
  RtpFetch("10.0.0.9",554,"/live","root","pw",false,"",2,4,0,"",""); MP4Stream(1,7); NextPartInfo(false,0)
  )";
const std::vector<Row> kSnapshotRows = {
    Row("Picture", {}, kTake + kAnswer),
    Row("Disabled", {{"GetCamConnStatus", 6}}, "GetCamConnStatus(7); " + kDefault),
    Row("DisabledByNegativeId", {{"camId", -1}, {"GetCamConnStatus", 6}}, "GetCamConnStatus(-1); " + kDefault),
    Row("CapabilityFails", {{"LoadCapability", 1}}, Until("LoadCapability", kTake) + kNoModel + kDefault),
    Row("GenericWithOtherChannel", {{"camChannel", "2"}, {"IsGenericApi", true}, {"IsValid", false}}, R"(
        GetCamConnStatus(7); IsGenericApi("Acme","X100"); GetRealCapFilePath("Acme","10.0.0.9",80,"")
        LoadCapability(1,"Acme","X100","2","/kept"); GetChannelList(); GetDefaultChannel()
        LoadByParam(1,"10.0.0.9",80,"root","pw","Acme","X100","3","/src"); IsValid()
        log("cameracap:770","HandleCameraSnapshot","Failed to get camera API.\n"); )" + kDefault),
    Row("UserDefinedBySourcePath",
        {{"camModel", "User Define"}, {"camId", 0}, {"camPassword", gszFakePass}, {"NeedsSourcePath", true}},
        R"(GetCamRealPass(0,"User","Define","9")
        LoadByParam(1,"10.0.0.9",80,"root","secret","User","Define","9","/src"); IsValid(); NeedsSourcePath()
        GetVideoType("H.264"); NeedsSourcePath(); SelectVideoType(3,0); GetSnapshotPath("",80,0)
        SnapshotGetFromAPI("10.0.0.9",8080,"root","secret","",3); )" +
            kAnswer),
    Row("CodecWithoutSetting", {{"camVideoType", "mjpeg"}},
        kLoadForPicture + R"(GetVideoType("mjpeg"); NeedsSourcePath()
        GetSnapshotPath("",80,0); SnapshotGetFromAPI("10.0.0.9",8080,"root","pw","",3); )" +
            kAnswer),
    Row("OtherKinds", {{"GetSnapshotPath", List(0, "/shot", 8080, 5)}}, kTake + kAnswer),
    Row("FailsButLeavesAPicture", {{"SnapshotGetFromAPI", List(4, "half")}}, kTake + kFailed),
    Row("SuccessWithoutAPicture", {{"SnapshotGetFromAPI", 0}}, kTake + kFailed),
    Row("PictureOfNoBytes", {{"SnapshotGetFromAPI", List(0, "")}}, kTake + kFailed),
    Row("NoPath", {{"GetSnapshotPath", 1}}, Until("GetSnapshotPath", kTake) + kNoPath + kFailed),
    Row("NoSetting", {{"GetListForCodec", List(List())}}, Swap(kTake, "640x480", "") + kAnswer),
    Row("NoDefaultPicture", {{"GetCamConnStatus", 6}, {"ReadContentFromFileToBuf", -1}},
        "GetCamConnStatus(7); " + kRead +
            R"(log("cameracap:685","GetDefaultSnapshot","Failed to read img[../images/add_camera_default.png]!\n"))"),
    Row("StreamFails", {{"camVideoType", "MPEG2"}, {"GetSnapshotPath", List(0, "/live", 554, 4)}, {"NextPartInfo", 1}},
        kStreamPicture + R"(log("cameracap:221","GetImgByRTP","Get rtp header failed.\n"); ~MP4Stream; ~RtpFetch; )" +
            kFailed),
    Row("Raw", {{"jsonResponse", false}, {"SnapshotGetFromAPI", List(0, std::string("j\0p\ng", 5))}},
        kTake + R"(stdout("Content-type: image/jpeg\r\nContent-length: 5\r\n\r\nj\u0000p\ng"))"),
    Row("RawDefault", {{"jsonResponse", false}, {"GetCamConnStatus", 6}},
        "GetCamConnStatus(7); " + kRead + R"(stdout("Content-type: image/jpeg\r\nContent-length: 3\r\n\r\npng"))"),
    Row("DefaultOfNoBytes", {{"GetCamConnStatus", 6}, {"ReadContentFromFileToBuf", List(0, "")}},
        "GetCamConnStatus(7); " + kRead + Swap(kAnswer, "jpg", "")),
    Row("Exception", {{"HttpBase64EncodeUnsigned", kThrow}},
        Until("HttpBase64EncodeUnsigned", kTake + kAnswer) + "thrown"),
    Row("ExceptionOfDefault", {{"SnapshotGetFromAPI", List(1, "half")}, {"ReadContentFromFileToBuf", kThrow}},
        kTake + Until("ReadContentFromFileToBuf", kFailed) + "thrown"),
};
INSTANTIATE_TEST_SUITE_P(GetSnapshot, MethodTest, Rows("GetSnapshot", kAskPicture, kSnapshotRows), kByName);

TEST_F(ModuleTest, SettingIsOfTheCodec) {
  for (const auto& [name, number] : {std::pair{"MJPEG", "1"}, {"MPEG4", "2"}, {"H.264", "3"}, {"MXPEG", "5"}}) {
    Reset();
    Send("GetSnapshot", With(kCamera, {{"camVideoType", name}}));
    const std::string take = Swap(Swap(kTake, "Codec(3", std::string("Codec(") + number), "H.264", name);
    EXPECT_EQ(Transcript(), Lines(kAskPicture + take + kAnswer));
  }
}

// --- The size probe -------------------------------------------------------------------------------------------------

const std::string kAskProbe = kAdmitted + R"(
  GetParam("camId",0); GetParam("camPort",""); GetParam("camIP",""); GetParam("camUser",""); GetParam("camPass","")
  GetParam("vendor",""); GetParam("model",""); GetParam("camChannel",""); GetParam("camSourcePath","")
  GetParam("camVdoType","MJPEG"); )";
const std::string kMeasure = R"(LoadByParam(1,"10.0.0.9",80,"root","pw","Acme","X100","9","/src"); IsValid()
  GetVideoType("MJPEG"); NeedsSourcePath(); GetSnapshotPath("",80,0)
  SnapshotGetFromAPI("10.0.0.9",8080,"root","pw","",3); GetJpegReso("jpg"); )";
const std::vector<Row> kProbeRows = {
    Row("Measured", {}, kMeasure + R"(SetSuccess({"userDefineReso":"1280x720"}))"),
    Row("NoPicture", {{"GetSnapshotPath", 1}, {"GetJpegReso", List(0, 0)}},
        Until("GetSnapshotPath", kMeasure) + kNoPath + "GetJpegReso(null); " + Error(457)),
    Row("OtherCodec", {{"camVdoType", "H.264"}},
        Swap(kMeasure, "MJPEG", "H.264") + R"(SetSuccess({"userDefineReso":"1280x720"}))"),
    Row("NoWidth", {{"SnapshotGetFromAPI", List(3, "half")}, {"GetJpegReso", List(0, 480)}},
        Swap(kMeasure, "\"jpg", "\"half") + Error(457)),
    Row("NoHeight", {{"camPass", gszFakePass}, {"GetJpegReso", List(640, 0)}},
        R"(GetCamRealPass(7,"Acme","X100","9"); )" + Swap(kMeasure, "\"pw", "\"secret") + Error(457)),
    Row("NotValid", {{"IsValid", false}}, Until("IsValid", kMeasure) + R"(
        log("cameracap:534","HandleCamUserDefineReso","Failed to get camera API.\n"); SetSuccess(null))"),
};
INSTANTIATE_TEST_SUITE_P(CamCapUserDefineReso, MethodTest, Rows("CamCapUserDefineReso", kAskProbe, kProbeRows),
                         kByName);

}  // namespace
