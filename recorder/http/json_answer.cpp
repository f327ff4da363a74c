#include "recorder/http/json_answer.h"

#include "recorder/utility/json_text.h"

namespace recorder {

std::string JsonAnswer(int status, const Json::Value& json, const std::string& headers) {
  const std::string body = ToText(json);
  return "Status: " + std::to_string(status) + "\r\n" + std::string(kCommonHeaders) + headers +
         "Content-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
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
