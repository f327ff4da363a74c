#include "recorder/host/api_call.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>

#include "recorder/request/request_scope.h"

namespace recorder {
namespace {

/// A conversion that fails behind one of a parameter: of another kind, of another value, in the work.
void (*const kHandlers[])(NORV::APIRequest*, NORV::APIResponse*) = {
    [](NORV::APIRequest* request, NORV::APIResponse*) {
      request->GetParam("text", {}).asString();
      throw Json::LogicError("something else");
    },
    [](NORV::APIRequest* request, NORV::APIResponse*) {
      request->GetParam("text", {}).asString();
      Json::Value(Json::arrayValue).append(1).asString();
      Json::Value(Json::objectValue).asString();
    },
    [](NORV::APIRequest* request, NORV::APIResponse*) {
      request->GetParam("text", {}).asString();
      RequestScope::Current().WorkFor({"Acme", "X", "cam1", 80, "admin"});
      Json::Value("x").asInt();
    },
};

TEST(ApiCallTest, OnlyAFailedConversionBlamesAParameter) {
  for (auto* handler : kHandlers) {
    const ModuleMethod method{"Api", 1, "Method", handler};
    ApiCall call;
    call.method = &method;
    call.params["text"] = "eighty";
    const ApiAnswer answer = RunCall(call);
    EXPECT_EQ(answer.kind, ApiAnswer::Kind::kException) << answer.reason;
    EXPECT_EQ(answer.parameter, "");
  }
}

/// What the call before left at descriptor 1: a text that nobody took, another file, nothing.
void (*const kLeavings[])() = {
    [] { std::printf("late"); },
    [] { dup2(STDERR_FILENO, STDOUT_FILENO); },
    [] { close(STDOUT_FILENO); },
};

TEST(OutputCaptureTest, TakesWhatOneCallWroteWhateverTheOneBeforeLeft) {
  OutputCapture output;
  for (auto* leave : kLeavings) {
    output.Start();
    leave();
    output.Start();
    std::printf("whole");
    EXPECT_EQ(output.Take(), "whole");
  }
}

}  // namespace
}  // namespace recorder
