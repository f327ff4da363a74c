#include "recorder/host/api_call.h"

#include <gtest/gtest.h>

#include "recorder/request/request_scope.h"
#include "tests/recorder/rows.h"

namespace recorder {
namespace {

using Kind = ApiAnswer::Kind;

struct ExceptionCase {
  const char* name;
  void (*handler)(NORV::APIRequest*, NORV::APIResponse*);
  Kind kind;
  const char* culprit = "";
};

const ExceptionCase kExceptionCases[] = {
    {"TextIsNoNumber", [](NORV::APIRequest* request, NORV::APIResponse*) { request->GetParam("text", {}).asInt(); },
     Kind::kBadParameter, "text"},
    {"ListIsNoText", [](NORV::APIRequest* request, NORV::APIResponse*) { request->GetParam("list", {}).asString(); },
     Kind::kBadParameter, "list"},
    {"NumberIsTooLarge", [](NORV::APIRequest* request, NORV::APIResponse*) { request->GetParam("large", {}).asInt(); },
     Kind::kBadParameter, "large"},
    {"OfAnotherKind",
     [](NORV::APIRequest* request, NORV::APIResponse*) {
       request->GetParam("text", {}).asString();
       throw Json::LogicError("something else");
     },
     Kind::kException},
    {"OfAnotherValue",
     [](NORV::APIRequest* request, NORV::APIResponse*) {
       request->GetParam("text", {}).asString();
       Json::Value(Json::arrayValue).append(1).asString();
       Json::Value(Json::objectValue).asString();
     },
     Kind::kException},
    {"OfTheWork",
     [](NORV::APIRequest* request, NORV::APIResponse*) {
       request->GetParam("text", {}).asString();
       RequestScope::Current().WorkFor({"Acme", "X", "cam1", 80, "admin"});
       Json::Value("x").asInt();
     },
     Kind::kException},
};

class ApiCallTest : public testing::TestWithParam<ExceptionCase> {};

TEST_P(ApiCallTest, OnlyAFailedConversionBlamesAParameter) {
  const ModuleMethod method{"Api", 1, "Method", GetParam().handler};
  ApiCall call;
  call.method = &method;
  call.params["text"] = "eighty";
  call.params["list"].append(1);
  call.params["large"] = Json::Int64{1} << 40;
  const ApiAnswer answer = RunCall(call);
  EXPECT_EQ(answer.kind, GetParam().kind) << answer.reason;
  EXPECT_EQ(answer.parameter, GetParam().culprit);
}

INSTANTIATE_TEST_SUITE_P(Exceptions, ApiCallTest, testing::ValuesIn(kExceptionCases), kByName);

}  // namespace
}  // namespace recorder
