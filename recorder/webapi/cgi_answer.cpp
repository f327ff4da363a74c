#include "recorder/webapi/cgi_answer.h"

#include <string_view>

#include "recorder/utility/text.h"

namespace recorder {

namespace {

// An answer may hold a picture of somebody's home: nothing on the way keeps it, and no browser takes it for a script.
constexpr std::string_view kCommonHeaders = "Cache-Control: no-store\r\nX-Content-Type-Options: nosniff\r\n";

std::string JsonAnswer(int status, const Json::Value& json) {
  const std::string body = ToText(json);
  return "Status: " + std::to_string(status) + "\r\n" + std::string(kCommonHeaders) +
         "Content-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

/// A failure outside the module: the HTTP status is its code.
std::string FailureAnswer(int status, const std::string& message, const std::string& parameter = {}) {
  Json::Value json(Json::objectValue);
  json["success"] = false;
  json["error"]["code"] = status;
  json["error"]["message"] = message;
  if (!parameter.empty()) json["error"]["parameter"] = parameter;
  return JsonAnswer(status, json);
}

bool HasHeaderBlock(const std::string& raw) { return raw.find("\r\n\r\n") != std::string::npos; }

}  // namespace

std::string ToText(const Json::Value& json) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  builder["emitUTF8"] = true;
  std::string text = Json::writeString(builder, json);
  if (IsUtf8(text)) return text;
  builder["emitUTF8"] = false;  // the writer then escapes, and replaces what is no character
  return Json::writeString(builder, json);
}

std::string ToCgi(const ApiAnswer& answer) {
  switch (answer.kind) {
    case ApiAnswer::Kind::kJson:
      return JsonAnswer(200, answer.json);
    case ApiAnswer::Kind::kRaw:
      if (HasHeaderBlock(answer.raw)) return std::string(kCommonHeaders) + answer.raw;
      return FailureAnswer(502, "the module's answer has no header lines");
    case ApiAnswer::Kind::kBadParameter:
      return FailureAnswer(400, "the parameter \"" + answer.parameter + "\" has a wrong type or is missing",
                           answer.parameter);
    case ApiAnswer::Kind::kException:
      return FailureAnswer(500, "the module failed: " + answer.reason);
    case ApiAnswer::Kind::kNone:
      break;
  }
  return FailureAnswer(502, "the module wrote no answer");
}

std::string ToCgi(const HttpError& error) {
  const std::string allow = error.Allow().empty() ? "" : "Allow: " + error.Allow() + "\r\n";
  return allow + FailureAnswer(error.Status(), error.what());
}

}  // namespace recorder
