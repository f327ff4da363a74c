#include "recorder/http/json_answer.h"

#include "recorder/utility/json_text.h"

namespace recorder {

std::string JsonTextAnswer(int status, std::string_view text, std::string_view headers) {
  std::string answer = "Status: " + std::to_string(status) + "\r\n";
  for (const std::string_view part :
       {kCommonHeaders, headers, std::string_view("Content-Type: application/json\r\n")}) {
    answer += part;
  }
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

std::string ToCgi(const HttpError& error) {
  return JsonAnswer(error.Status(), Failure(error.Status(), error.what()), error.Headers());
}

}  // namespace recorder
