#include "platform/utility.h"
#include "tests/cameracap/request.h"

namespace {

// --- Model list and existing capabilities ---------------------------------------------------------------------------

const std::vector<Row> kModelRows = {
    Row("List", {}, R"(GetCamModelEnumInfo([]); SetSuccess({"cameraModel":["X100"],"success":true}))"),
    Row("Failure", {{"GetCamModelEnumInfo", List(false, List("half"))}}, R"(GetCamModelEnumInfo([])
        SetSuccess({"cameraModel":["half"],"success":false}))"),
};
INSTANTIATE_TEST_SUITE_P(CameraModelEnum, MethodTest, Rows("CameraModelEnum", kAdmitted, kModelRows), kByName);

const std::vector<Row> kExistingRows = {
    Row("All", {}, R"(EnumExistedCameraCap([]); SetSuccess({"camCap":["a","b"]}))"),
    Row("OrAnError", {{"EnumExistedCameraCap", List(false, List("half"))}}, "EnumExistedCameraCap([]); " + Error(400)),
};
INSTANTIATE_TEST_SUITE_P(EnumExistedCamCap, MethodTest, Rows("EnumExistedCamCap", kAdmitted, kExistingRows), kByName);

// --- Capability of a model ------------------------------------------------------------------------------------------

const std::string kAskModel = kAdmitted + R"(GetParam("vendor",""); GetParam("model",""); GetParam("channel","0"); )";
const std::string kLoadModel = R"(LoadCapability(1,"Acme","X100","0",""); )";
const std::string kGetModel = R"(GetCamCap("Acme","X100",{}); SetSuccess({"camCap":["document"]}))";
const std::vector<Row> kCamCapRows = {
    Row("Defaults", {}, kLoadModel + kGetModel),
    Row("Given", {{"vendor", "user"}, {"model", "X1"}, {"channel", "2"}}, R"(
        LoadCapability(1,"user","X1","2",""); GetCamCap("user","X1",{}); SetSuccess({"camCap":["document"]}))"),
    Row("LoadFails", {{"LoadCapability", -3}},
        kLoadModel + R"(log("cameracap:395","HandleCamCap","Failed to get camera cap.\n"); )" + Error(400)),
    Row("HandlerObjectOfUserDefined", {{"vendor", "User"}, {"CamCapHandler", kThrow}}, "thrown"),
    Row("UserDefined", {{"vendor", "User"}, {"model", "any"}, {"channel", "9"}},
        R"(SetSuccess({"camCap":[{)"
        R"("AudioCHList":[],"ChanlList":[],"DINum":0,"FPSList":[],"MDCap":false,"MDList":[],"QualList":[],)"
        R"("ResoList":[],"VideoSvr":false,"audioCap":false,"cntChanl":1,"cntFPS":0,"cntQual":0,"cntRes":0,)"
        R"("codecOptimizationCap":0,"defChanl":"1","defCodecOptimization":1,"defFPS":"","defPass":"","defQual":"",)"
        R"("defReso":"","defRtspKeepAlive":1,"defRtspProtocol":4,"defUser":"","fisheyeType":0,"fpsIndCap":false,)"
        R"("hasEdgeStg":false,"id":"User Define","multiDI":false,"qualIndCap":false,"resIndCap":false,)"
        R"("rtspProtocolCap":11,"setDICap":false,"singleStream":true,"stmFisheyeType":0,"streamCnt":0,"videoCap":1,)"
        R"("videoCapList":[{"stList":["HTTP"],"vt":"MJPEG"},{"stList":["RTSP"],"vt":"H.264"},)"
        R"({"stList":["RTSP"],"vt":"MPEG4"}]}]}))"),
};
INSTANTIATE_TEST_SUITE_P(CamCap, MethodTest, Rows("CamCap", kAskModel, kCamCapRows), kByName);

// --- Capability of a camera whose file comes first ------------------------------------------------------------------

const std::string kAskCamera = kAdmitted + R"(
  GetParam("camId",0); GetParam("camPort",""); GetParam("camIP",""); GetParam("camUser",""); GetParam("camPass","")
  GetParam("vendor",""); GetParam("model",""); GetParam("camChannel",""); GetParam("camCapCmd",""); )";
const std::string kObtained = R"(GetCamCapFile("10.0.0.9","root","pw","9","Acme","X100",80,0,0,"",0)
  LoadCapability(1,"Acme","X100","9","/cap"); GetCamCap("Acme","X100",{}); SetSuccess({"camCap":["document"]}))";
const std::string kPsia = Swap(kObtained, "Acme", "PSIA");
const std::string kReplaced = Until("LoadCapability", kPsia) + R"(GetChannelList(); GetDefaultChannel()
  LoadCapability(1,"PSIA","X100","3","/cap"); GetCamCap("PSIA","X100",{}); SetSuccess({"camCap":["document"]}))";
const std::vector<Row> kRemoteRows = {
    Row("Obtained", {{"camCapCmd", 6}}, Swap(kObtained, "\"\",0)", "\"\",6)")),
    Row("StoredPassword", {{"camPass", gszFakePass}}, R"(GetCamRealPass(7,"Acme","X100","9")
        )" + Swap(kObtained, "pw", "secret")),
    Row("NotQuiteThePlaceholder", {{"camPass", "*********"}}, Swap(kObtained, "pw", "*********")),
    Row("LoadFails", {{"LoadCapability", 2}}, Until("LoadCapability", kObtained) + Error(400)),
    Row("SubstitutedButRead", {{"GetCamCapFile", List(1, "/cap")}}, Until("GetCamCap", kObtained) + Error(459)),
    Row("SubstitutedAndNotRead", {{"GetCamCapFile", List(1, "/cap")}, {"LoadCapability", 2}},
        Until("LoadCapability", kObtained) + Error(400)),
    Row("KeptFileWithoutChannelCheck", {{"camCapCmd", 2}, {"vendor", "PSIA"}},
        R"(GetRealCapFilePath("PSIA","10.0.0.9",80,""); LoadCapability(1,"PSIA","X100","9","/kept")
        GetCamCap("PSIA","X100",{}); SetSuccess({"camCap":["document"]}))"),
    Row("ChannelListed", {{"vendor", "PSIA"}}, Swap(kPsia, "GetCamCap(", "GetChannelList(); GetCamCap(")),
    Row("ChannelNotListed", {{"vendor", "PSIA"}, {"GetChannelList", List(List("1"))}}, kReplaced),
    Row("NoChannelCheckForOtherCase", {{"vendor", "psia"}}, Swap(kObtained, "Acme", "psia")),
    Row("NeedsACommand", {{"camCapCmd", "none"}}, "thrown"),
};
INSTANTIATE_TEST_SUITE_P(CamCapRemote, MethodTest, Rows("CamCapRemote", kAskCamera, kRemoteRows), kByName);

TEST_F(ModuleTest, FailedFetchNamesItsCause) {
  for (const auto& [result, code] : {std::pair{2, 458}, {3, 460}, {4, 461}, {5, 457}, {7, 457}, {-1, 457}, {-4, 457}}) {
    Reset();
    Script("GetCamCapFile", {List(result, "/cap")});
    Send("CamCapRemote", kCamera);
    EXPECT_EQ(Transcript(), Lines(kAskCamera) + Until("GetCamCapFile", kObtained) + Lines(Error(code))) << result;
  }
}

TEST_F(ModuleTest, SecondLoadMayFail) {
  Script("GetChannelList", {List(List("1"))});
  Script("LoadCapability", {0, 5});
  Send("CamCapRemote", With(kCamera, {{"vendor", "PSIA"}}));
  EXPECT_EQ(Transcript(), Lines(kAskCamera + kReplaced.substr(0, kReplaced.find("GetCamCap(")) + Error(400)));
}

}  // namespace
