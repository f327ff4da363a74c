#include "recorder/host/api_call.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <tuple>
#include <utility>

#include "recorder/host/cause_header.h"
#include "recorder/host/stored_call.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/config.h"
#include "recorder/utility/json_text.h"

namespace NORV {

struct APIRequest::Impl {
  const recorder::ApiCall& call;
  std::string lastKey;  ///< of the parameter that was read last, and its value: the culprit if it cannot be converted
  Json::Value lastValue;
};

struct APIResponse::Impl {
  bool isDataKept;
  std::string answer = {};  ///< "": none yet
  Json::Value data = {};    ///< of a success, if it is to be kept
};

APIRequest::APIRequest(Impl* requestImpl) : impl(requestImpl) {}

Json::Value APIRequest::GetParam(const std::string& key, const Json::Value& defaultValue) const {
  impl->lastKey = key;
  impl->lastValue = impl->call.params.get(key, defaultValue);
  return impl->lastValue;
}

std::string APIRequest::GetAPIMethod() const { return impl->call.method->name; }

std::string APIRequest::GetCookie(const std::string& name, const std::string& defaultValue) const {
  const auto cookie = impl->call.cookies.find(name);
  return cookie == impl->call.cookies.end() ? defaultValue : cookie->second;
}

bool APIRequest::IsAuthorized() const { return impl->call.isAuthorized; }

APIResponse::APIResponse(Impl* responseImpl) : impl(responseImpl) {}

void APIResponse::SetSuccess(const Json::Value& data) {
  impl->answer = R"({"data":)" + recorder::ToText(data) + R"(,"success":true})";
  if (impl->isDataKept) impl->data = data;
}

void APIResponse::SetError(int code, const Json::Value& data) {
  Json::Value error = data.isObject() ? data : Json::Value(Json::objectValue);
  error["code"] = code;
  impl->answer = R"({"error":)" + recorder::ToText(error) + R"(,"success":false})";
  impl->data = Json::Value();
}

}  // namespace NORV

namespace recorder {

namespace {

/// Methods by what the recorder must know of them; all others contact cameras for as long as a test may take.
constexpr std::string_view kWithoutCamera[] = {"CameraModelEnum", "CamCap", "EnumExistedCamCap"};
constexpr std::string_view kWithList[] = {"CamBatAddVerify"};

std::chrono::milliseconds LimitOf(std::string_view method) {
  const CameraLimits& limits = GetConfig().limits;
  return method == kPictureMethod ? limits.picture : limits.test;
}

/// False for a request for a size without a codec: the module then asks for MJPEG, which is a default and no wish.
bool NamesCodec(const ApiCall& call) {
  constexpr std::string_view kSizeMethod = "CamCapUserDefineReso";
  return call.method->name != kSizeMethod || call.params.isMember("camVdoType");
}

RungTimes EndedRungs(RequestScope& scope) {
  scope.Rungs().Enter(Rung::kNone);
  return scope.Rungs();
}

/// True when a conversion of `value` to text, number or truth fails by the exception that says `reason`.
bool FailsLike(const Json::Value& value, const std::string& reason) {
  const auto fails = [&](const auto& convert) {
    try {
      convert();
      return false;
    } catch (const Json::Exception& error) {
      return reason == error.what();
    }
  };
  return fails([&] { std::ignore = value.asString(); }) || fails([&] { std::ignore = value.asInt(); }) ||
         fails([&] { std::ignore = value.asBool(); });
}

/// What the module gave, of either kind.
ApiAnswer AnswerOf(std::string raw, std::string json) {
  using Kind = ApiAnswer::Kind;
  const Kind kind = !raw.empty() ? Kind::kRaw : !json.empty() ? Kind::kJson : Kind::kNone;
  return {.kind = kind, .json = std::move(json), .raw = std::move(raw)};
}

}  // namespace

std::span<const std::string_view> MethodsWithoutCamera() { return kWithoutCamera; }

std::span<const std::string_view> MethodsWithList() { return kWithList; }

bool ContactsNoCamera(std::string_view method) {
  return std::find(std::begin(kWithoutCamera), std::end(kWithoutCamera), method) != std::end(kWithoutCamera);
}

bool TakesList(std::string_view method) {
  return std::find(std::begin(kWithList), std::end(kWithList), method) != std::end(kWithList);
}

ApiAnswer NotAdmitted() {
  constexpr int kNoPermission = 105;
  NORV::APIResponse::Impl state{.isDataKept = false};
  NORV::APIResponse(&state).SetError(kNoPermission, Json::Value());
  return {.kind = ApiAnswer::Kind::kJson, .json = std::move(state.answer)};
}

ApiAnswer RunCall(const ApiCall& call) {
  OutputCapture output;
  return RunCall(call, output);
}

ApiAnswer RunCall(const ApiCall& call, OutputCapture& output) {
  NORV::APIRequest::Impl requestState{call, {}, {}};
  NORV::APIResponse::Impl responseState{.isDataKept = !ContactsNoCamera(call.method->name)};
  NORV::APIRequest request(&requestState);
  NORV::APIResponse response(&responseState);

  RequestScope scope(LimitOf(call.method->name));
  scope.WhenLoginTaken(call.whenLoginTaken);
  if (!NamesCodec(call)) scope.TakeAnyCodec();
  output.Start();
  try {
    call.method->handler(&request, &response);
  } catch (const Json::Exception& error) {
    const bool isParameter = !scope.HasBegun() && FailsLike(requestState.lastValue, error.what());
    if (!isParameter) return {.kind = ApiAnswer::Kind::kException, .reason = error.what()};
    return {.kind = ApiAnswer::Kind::kBadParameter, .parameter = requestState.lastKey, .reason = error.what()};
  } catch (const std::exception& error) {
    return {.kind = ApiAnswer::Kind::kException, .reason = error.what()};
  }
  ApiAnswer answer = AnswerOf(output.Take(), std::move(responseState.answer));
  answer.causes = CausesOf(call, responseState.data, scope);
  answer.hasSentLogin = scope.HasSentLogin();
  answer.rungs = EndedRungs(scope);
  return answer;
}

}  // namespace recorder
