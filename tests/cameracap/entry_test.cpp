#include <exception>

#include "platform/utility.h"
#include "tests/cameracap/request.h"

namespace {

/// A handler whose inherited parts can be reached.
struct OpenHandler : CameraCapHandler {
  using CameraCapHandler::CameraCapHandler;
  using CameraCapHandler::errorCode;
  using CameraCapHandler::errorParams;
  using CameraCapHandler::isRelayed;
};

struct HandlerTest : ModuleTest, Exchange {};

TEST_F(HandlerTest, IsRelayedOnlyByTheCmsHost) {
  for (const bool cmsHost : {false, true}) {
    Script("IsCmsHost", {cmsHost});
    requestImpl.params = {};
    EXPECT_FALSE(OpenHandler(&request, &response).isRelayed);
    requestImpl.params["relayedCmd"] = true;
    EXPECT_EQ(OpenHandler(&request, &response).isRelayed, cmsHost);
  }
}

TEST_F(HandlerTest, AnswersTheLastErrorAndReadsMissingParametersAsEmpty) {
  OpenHandler handler{&request, &response};
  EXPECT_TRUE(handler.errorCode == 0 && handler.errorParams.empty());
  Reset();
  handler.errorCode = static_cast<VT_WEBAPI_ERR_CODE>(400);
  handler.SetResponse(Json::Value());
  handler.SetErrorCode(static_cast<VT_WEBAPI_ERR_CODE>(401), "a", "b");
  handler.SetErrorCode(static_cast<VT_WEBAPI_ERR_CODE>(468), "c", "");
  handler.SetResponse(List("data"));
  EXPECT_EQ(Transcript(), Lines(Error(400) + R"(; SetError(468,{"param1":"c","param2":""}))"));
}

TEST_F(HandlerTest, MayChangeACameraOfItsOwnOrAsCmsHost) {
  OpenHandler handler{&request, &response};
  Reset();
  Script("IsCmsHost", {true, false});
  Script("GetCamOwnerKdId", {0, 3});
  EXPECT_TRUE(handler.IsCMSClosed(12) && handler.IsCMSClosed(12) && !handler.IsCMSClosed(12));
  EXPECT_EQ(Transcript(), Lines(R"(IsCmsHost(); IsCmsHost(); GetCamOwnerKdId(12); IsCmsHost(); GetCamOwnerKdId(12)
    log("webapi/vtwebapihandler:556","IsCMSClosed","Camera[12]: Modify detection param while CMS closed.\n"))"));
}

// --- Methods --------------------------------------------------------------------------------------------------------

TEST_P(MethodTest, Goes) {
  testing::internal::CaptureStdout();
  try {
    Send(GetParam().method, GetParam().given);
  } catch (const std::exception&) {
    Write("thrown");
  }
  const std::string raw = testing::internal::GetCapturedStdout();
  if (!raw.empty()) WriteCall("stdout", raw);
  EXPECT_EQ(Transcript(), Lines(GetParam().expected));
}

TEST_F(ModuleTest, LeavesOtherMethodsUnanswered) {
  for (const std::string& method : {std::string(), std::string("camcap"), std::string("CamCap\0", 7)}) {
    Reset();
    Send(method);
    EXPECT_EQ(Transcript(), Lines(kAdmitted));
  }
}

TEST_F(ModuleTest, PlaceholderEndsAtNulForOneMethodOnly) {
  const Json::Value longer = gszFakePass + std::string("\0x", 2);
  for (const auto& [method, used] : {std::pair{"CamCapRemote", R"("secret")"},
                                     {"CameraTest", R"("********\u0000x")"},
                                     {"GetSnapshot", R"("********\u0000x")"},
                                     {"CamCapUserDefineReso", R"("********\u0000x")"}}) {
    Reset();
    Send(method, With(kCamera, {{"camPass", longer}, {"camPassword", longer}, {"camPassWord", longer}}));
    EXPECT_NE(Transcript().find(used), std::string::npos) << method;
  }
}

const char kAsked[] = R"(GetParam("relayedCmd",false); IsCmsHost(); IsAuthorized(); IsVTRunning()
  GetParam("isCrossSite",0); GetParam("client","")
  )";
const std::string kProved =
    R"(GetParam("cookie","cookie"); GetCookie("timestamp",""); IsAuthPairMatch("cookie","12:34"); )";
const std::string kRefused = "SetError(105,null)";
const std::string kGroup = Swap(kProved, "IsAuthPairMatch", "IsAuthByPairMatch");
const std::string kServed = R"(GetAPIMethod(); EnumExistedCameraCap([]); SetSuccess({"camCap":["a","b"]}))";
const std::vector<Row> kCallerRows = {
    Row("CookieIsTheWord", {}, kProved + kServed),
    Row("CookieGiven", {{"client", "KR180MX"}, {"cookie", "c"}},
        Swap(kProved, "Match(\"cookie", "Match(\"c") + kServed),
    Row("NameEndsAtNul", {{"client", std::string("REC_SERVER\0x", 12)}, {"isCrossSite", 2}}, kProved + kServed),
    Row("CrossSite", {{"isCrossSite", 1}}, kGroup + kServed),
    Row("NoClient", {{"client", ""}}, kRefused),
    Row("ClientInOtherCase", {{"client", "nvr"}}, kRefused),
    Row("NotRunning", {{"IsVTRunning", false}}, kRefused),
    Row("PairRefused", {{"IsAuthPairMatch", false}}, kProved + kRefused),
    Row("GroupPairRefused", {{"isCrossSite", 1}, {"IsAuthByPairMatch", false}}, kGroup + kRefused),
};
INSTANTIATE_TEST_SUITE_P(Caller, MethodTest,
                         Rows("EnumExistedCamCap", kAsked, kCallerRows, {{"client", "NVR"}, {"IsAuthorized", false}}),
                         kByName);

}  // namespace
