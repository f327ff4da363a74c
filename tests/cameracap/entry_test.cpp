#include <optional>

#include "tests/cameracap/request.h"

using scripted::FullTranscript;

namespace {

/// A handler whose inherited parts can be reached.
struct OpenHandler : CameraCapHandler {
  using CameraCapHandler::CameraCapHandler;
  using CameraCapHandler::errorCode;
  using CameraCapHandler::errorParams;
  using CameraCapHandler::isRelayed;
};

struct HandlerTest : ModuleTest {
  OpenHandler& Handler() {
    if (!handler) handler.emplace(&request, &response);
    return *handler;
  }

  NORV::APIRequest::Impl requestImpl;
  NORV::APIResponse::Impl responseImpl;
  NORV::APIRequest request{&requestImpl};
  NORV::APIResponse response{&responseImpl};
  std::optional<OpenHandler> handler;
};

TEST_F(HandlerTest, IsRelayedOnlyByTheCmsHost) {
  const Params kRelayed{{"relayedCmd", true}};
  for (const bool cmsHost : {false, true}) {
    for (const Params& params : {Params{}, Params{{"relayedCmd", false}}, kRelayed}) {
      scripted::Reset();
      Script("IsCmsHost", cmsHost);
      requestImpl.params = params;
      EXPECT_EQ(OpenHandler(&request, &response).isRelayed, cmsHost && params == kRelayed);
      EXPECT_EQ(FullTranscript(), "GetParam(\"relayedCmd\", false)\nIsCmsHost()\n");
    }
  }
}

TEST_F(HandlerTest, AnswersTheLastError) {
  EXPECT_EQ(Handler().errorCode, 0);
  EXPECT_TRUE(Handler().errorParams.empty());
  Handler().SetErrorCode(static_cast<VT_WEBAPI_ERR_CODE>(400), "a", "b");
  Handler().SetErrorCode(static_cast<VT_WEBAPI_ERR_CODE>(468), "c", "");
  Handler().SetResponse(List("data"));
  EXPECT_EQ(Transcript(), "SetError(468, {\"param1\":\"c\",\"param2\":\"\"})\n");
}

TEST_F(HandlerTest, ReadsMissingErrorParametersAsEmpty) {
  Handler().errorCode = static_cast<VT_WEBAPI_ERR_CODE>(400);
  Handler().SetResponse(Json::Value());
  EXPECT_EQ(Transcript(), Error(400));
  EXPECT_EQ(Handler().errorParams, (std::map<int, std::string>{{1, ""}, {2, ""}}));
}

TEST_F(HandlerTest, MayChangeACameraOfItsOwnOrAsCmsHost) {
  Handler();
  Script("IsCmsHost", true, false);
  Script("GetCamOwnerKdId", 0, 3);
  for (const bool expected : {true, true, false}) EXPECT_EQ(Handler().IsCMSClosed(12), expected);
  EXPECT_EQ(Transcript(), Lines(R"(
    GetCamOwnerKdId(12); GetCamOwnerKdId(12)
    log webapi/vtwebapihandler:556 IsCMSClosed "Camera[12]: Modify detection param while CMS closed.\n"
  )"));
}

// --- Admission ------------------------------------------------------------------------------------------------------

const char kRefused[] = "SetError(105, null)\n";

struct AdmissionRow {
  const char* name;
  Params params;
  const char* denial;  ///< name of a check that answers false, or ""
  const char* expected;
};
const AdmissionRow kAdmissionRows[] = {
    {"TrustedClient", {{"client", "KR180MX"}, {"cookie", "c"}}, "", R"(
        GetCookie("timestamp", ""); IsAuthPairMatch("c", "12:34"); served)"},
    {"CookieIsTheWord", {{"client", "NVR"}}, "", R"(
        GetCookie("timestamp", ""); IsAuthPairMatch("cookie", "12:34"); served)"},
    {"NameEndsAtNul", {{"client", std::string("REC_SERVER\0x", 12)}, {"cookie", "c"}, {"isCrossSite", 2}}, "", R"(
        GetCookie("timestamp", ""); IsAuthPairMatch("c", "12:34"); served)"},
    {"CrossSite", {{"client", "NVR"}, {"cookie", "c"}, {"isCrossSite", 1}}, "", R"(
        GetCookie("timestamp", ""); SlaveKdAuthentication(); IsAuthByPairMatch("c", "12:34")
        ~SlaveKdAuthentication; served)"},
    {"NoClient", {}, "", "SetError(105, null)"},
    {"ClientInOtherCase", {{"client", "nvr"}}, "", "SetError(105, null)"},
    {"NotRunning", {{"client", "NVR"}}, "IsVTRunning", "SetError(105, null)"},
    {"PairRefused", {{"client", "NVR"}, {"cookie", "c"}}, "IsAuthPairMatch", R"(
        GetCookie("timestamp", ""); IsAuthPairMatch("c", "12:34"); SetError(105, null))"},
    {"GroupPairRefused", {{"client", "NVR"}, {"isCrossSite", 1}}, "IsAuthByPairMatch", R"(
        GetCookie("timestamp", ""); SlaveKdAuthentication(); IsAuthByPairMatch("cookie", "12:34")
        ~SlaveKdAuthentication; SetError(105, null))"},
};

struct AdmissionTest : RowTest<AdmissionRow> {
  void SetUp() override {
    ModuleTest::SetUp();
    for (const char* check : {"IsVTRunning", "IsAuthPairMatch", "IsAuthByPairMatch"}) Script(check, true);
    Script("IsAuthorized", false);
    Script("GetCookie", "12:34");
    Script("EnumExistedCameraCap", true);
  }
};

TEST_P(AdmissionTest, DecidesWithoutALogin) {
  if (*GetParam().denial != '\0') Script(GetParam().denial, false);
  Send("EnumExistedCamCap", GetParam().params);
  std::string expected = "IsVTRunning()\n" + Lines(GetParam().expected);
  const size_t served = expected.find("served");
  if (served != std::string::npos) {
    expected.replace(served, 6, "EnumExistedCameraCap([])\nSetSuccess({\"camCap\":[]})");
  }
  EXPECT_EQ(Transcript(), expected);
}
INSTANTIATE_TEST_SUITE_P(Caller, AdmissionTest, testing::ValuesIn(kAdmissionRows), ByName());

TEST_F(AdmissionTest, ReadsInOrder) {
  Send("", {{"client", "NVR"}});
  EXPECT_EQ(FullTranscript(), Lines(R"(
    GetParam("relayedCmd", false); IsCmsHost(); IsAuthorized(); IsVTRunning(); GetParam("isCrossSite", 0)
    GetParam("client", ""); GetParam("cookie", "cookie"); GetCookie("timestamp", "")
    IsAuthPairMatch("cookie", "12:34"); GetAPIMethod()
  )"));
}

TEST_F(AdmissionTest, RefusesBeforeLookingAtTheMethod) {
  for (const char* method : {"", "NoSuchMethod"}) {
    scripted::Reset();
    SetUp();
    Send(method);
    EXPECT_EQ(Transcript(), std::string("IsVTRunning()\n") + kRefused);
  }
}

TEST_F(ModuleTest, LeavesOtherMethodsUnanswered) {
  for (const std::string& method : {std::string(), std::string("camcap"), std::string("CamCaps"),
                                    std::string("CamCap\0", 7), std::string("getSnapshot")}) {
    Send(method);
  }
  EXPECT_EQ(Transcript(), "");
}

}  // namespace
