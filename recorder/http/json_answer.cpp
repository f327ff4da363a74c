#include "recorder/http/json_answer.h"

#include "recorder/utility/json_text.h"
#include "recorder/utility/log.h"

namespace recorder {

namespace {

/// The first lines of every answer.
std::string HeadOf(int status) { return "Status: " + std::to_string(status) + "\r\n" + CommonHeaders(); }

}  // namespace

std::string CommonHeaders() {
  constexpr char kSafe[] = "Cache-Control: no-store\r\nX-Content-Type-Options: nosniff\r\n";
  const std::string id = RequestInLog::Current();
  return kSafe + (id.empty() ? "" : "X-Request-Id: " + id + "\r\n");
}

std::string JsonTextAnswer(int status, std::string_view text, std::string_view headers) {
  std::string answer = HeadOf(status);
  for (const std::string_view part : {headers, std::string_view("Content-Type: application/json\r\n")}) answer += part;
  answer += "Content-Length: " + std::to_string(text.size()) + "\r\n\r\n";
  return answer += text;
}

std::string JsonAnswer(int status, const Json::Value& json, const std::string& headers) {
  return JsonTextAnswer(status, ToText(json), headers);
}

Json::Value Failure(int status, const std::string& message) {
  Json::Value json(Json::objectValue);
  json["success"] = false;
  json["error"]["code"] = status;
  json["error"]["message"] = message;
  return json;
}

std::string FailureAnswer(int status, const std::string& message, const std::string& parameter) {
  Json::Value json = Failure(status, message);
  if (!parameter.empty()) json["error"]["parameter"] = parameter;
  return JsonAnswer(status, json);
}

std::string ToCgi(const OwnAnswer& answer) {
  if (!answer.json.isNull()) return JsonAnswer(answer.status, answer.json, answer.headers);
  return HeadOf(answer.status) + answer.headers + "\r\n" + answer.body;
}

OwnAnswer Refusal(const std::exception& error) {
  if (const auto* refused = dynamic_cast<const HttpError*>(&error)) {
    Json::Value json = Failure(refused->Status(), refused->what());
    for (const std::string& member : refused->More().getMemberNames()) json["error"][member] = refused->More()[member];
    return {refused->Status(), json, refused->Headers()};
  }
  LogFailure(error.what());
  return {500, Failure(500, "the recorder failed; its log says why")};
}

}  // namespace recorder
