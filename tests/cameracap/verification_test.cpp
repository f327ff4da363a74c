#include "platform/utility.h"
#include "tests/cameracap/request.h"

namespace {

const std::string kAskTest = kAdmitted + R"(
  GetParam("camVideoType",null); GetParam("camStreamingType",null); GetParam("camId",null); GetParam("camPort",null)
  GetParam("camIP",null); GetParam("camUserName",null); GetParam("camPassWord",null); GetParam("camModel",null)
  GetParam("camChannel",null); GetParam("camSourcePath",null)
  GetVideoType("H.264"); GetStreamingType("RTSP"); )";

const std::string kPasses = R"(IsValid(); NeedsSourcePath(); HasStreamPath(); VerifyConnection(); RetDevApiToRetCV(0)
  SetSuccess({"result":0}))";
const std::string kOwnCheck = R"(IsGenericApi("Acme","X100")
  LoadByParam(1,"10.0.0.9",80,"root","pw","Acme","X100","9","/src"); )" +
                              kPasses;
const std::string kStreamPath = Until("HasStreamPath", kOwnCheck) + R"(GetStreamPath("/src",80)
  CameraVerify("10.0.0.9",8554,"root","pw","/live",3,2,4); Verify(); ~CameraVerify
  )";
const std::vector<Row> kTestRows = {
    Row("OwnCheck", {}, kOwnCheck),
    Row("OwnCheckFails", {{"VerifyConnection", -7}, {"RetDevApiToRetCV", 5}},
        Swap(Until("RetDevApiToRetCV", kOwnCheck), "CV(0", "CV(-7") + Error(463)),
    Row("GivenPath", {{"NeedsSourcePath", true}}, Until("NeedsSourcePath", kOwnCheck) + R"(
        CameraVerify("10.0.0.9",80,"root","pw","/src",3,2,4); Verify(); ~CameraVerify; SetSuccess({"result":0}))"),
    Row("StreamPath", {{"HasStreamPath", true}, {"Verify", 15}}, kStreamPath + Error(467)),
    Row("CheckThrows", {{"HasStreamPath", true}, {"Verify", kThrow}}, kStreamPath + "thrown"),
    Row("NoStreamPath", {{"HasStreamPath", true}, {"GetStreamPath", List(2, "/live", 8554)}},
        Until("GetStreamPath", kStreamPath) + Error(468)),
    Row("NotValid", {{"IsValid", false}}, Until("IsValid", kOwnCheck) + Error(468)),
    // The model's name is split at its first blank.
    Row("TwoBlanks", {{"camModel", "Acme  X 1"}}, Swap(kOwnCheck, "\"X100\"", "\" X 1\"")),
    Row("NoBlank", {{"camModel", "Acme\tX100"}}, Swap(kOwnCheck, R"("Acme","X100")", R"("","")")),
    Row("BlankFirst", {{"camModel", " X100"}}, Swap(kOwnCheck, "\"Acme\"", "\"\"")),
};
INSTANTIATE_TEST_SUITE_P(CameraTest, MethodTest, Rows("CameraTest", kAskTest, kTestRows), kByName);

const std::string kGeneric = R"(IsGenericApi("Acme","X100")
  GetCamCapFile("10.0.0.9","root","pw","9","Acme","X100",80,0,0,"",0)
  LoadByParam(1,"10.0.0.9",80,"root","pw","Acme","X100","9","/src"); )" +
                             kPasses;
const std::string kAskPsia = R"(IsGenericApi("PSIA","X100")
  GetCamCapFile("10.0.0.9","root","pw","9","PSIA","X100",80,0,0,"",0); LoadCapability(1,"PSIA","X100","9","/cap")
  )";
const std::vector<Row> kGenericRows = {
    Row("StoredPassword", {{"camPassWord", gszFakePass}, {"GetCamCapFile", 1}},
        R"(GetCamRealPass(7,"Acme","X100","9"); )" + Swap(kGeneric, "\"pw\"", "\"secret\"")),
    Row("LoginRefused", {{"GetCamCapFile", 4}}, Until("GetCamCapFile", kGeneric) + Error(464)),
    Row("Unreachable", {{"GetCamCapFile", 2}}, Until("GetCamCapFile", kGeneric) + Error(468)),
    Row("OnvifKeepsAnyChannel", {{"camModel", "ONVIF X100"}, {"GetChannelList", List(List("1"))}},
        Swap(kGeneric, "Acme", "ONVIF")),
    Row("ChannelKept", {{"camModel", "PSIA X100"}},
        kAskPsia + R"(GetChannelList()
        LoadByParam(1,"10.0.0.9",80,"root","pw","PSIA","X100","9","/src"); )" +
            kPasses),
    Row("ChannelReplaced", {{"camModel", "PSIA X100"}, {"GetChannelList", List(List("1"))}},
        kAskPsia + R"(GetChannelList(); GetDefaultChannel()
        LoadByParam(1,"10.0.0.9",80,"root","pw","PSIA","X100","3","/src"); )" +
            kPasses),
    Row("CapabilityNotLoaded", {{"camModel", "PSIA X100"}, {"LoadCapability", 1}}, kAskPsia + R"(
        log("cameracap:618","HandleCameraTest","Get camera capability failed.\n"); )" + Error(468)),
};
INSTANTIATE_TEST_SUITE_P(GenericCameraTest, MethodTest,
                         Rows("CameraTest", kAskTest, kGenericRows, {{"IsGenericApi", true}}), kByName);

TEST_F(ModuleTest, ResultNamesTheCause) {
  const std::map<int, int> kCodes{{4, 462}, {5, 463}, {6, 464}, {7, 465}, {8, 466}, {15, 467}};
  for (const int result : {-4, 1, 2, 3, 4, 5, 6, 7, 8, 9, 14, 15, 16}) {
    Script("RetDevApiToRetCV", {result});
    Send("CameraTest", kCamera);
    const std::string lines = Transcript();
    EXPECT_EQ(lines.substr(lines.rfind("SetError")), Error(kCodes.count(result) != 0 ? kCodes.at(result) : 468) + "\n");
  }
}

}  // namespace
