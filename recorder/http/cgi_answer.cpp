#include "recorder/http/cgi_answer.h"

#include <string_view>

#include "recorder/utility/log.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

// An answer may hold a picture of somebody's home: nothing on the way keeps it, and no browser takes it for a script.
constexpr std::string_view kCommonHeaders = "Cache-Control: no-store\r\nX-Content-Type-Options: nosniff\r\n";

std::string CauseHeader(const std::string& causes) {
  return causes.empty() ? "" : "Recorder-Cause: " + causes + "\r\n";
}

std::string JsonAnswer(int status, const Json::Value& json, const std::string& causes = {}) {
  const std::string body = ToText(json);
  return "Status: " + std::to_string(status) + "\r\n" + std::string(kCommonHeaders) + CauseHeader(causes) +
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

/// A module's own header lines and body. The length is what tells a client that a worker ended in the middle of it.
std::string RawAnswer(const std::string& raw, const std::string& causes) {
  constexpr std::string_view kHeaderEnd = "\r\n\r\n";
  const std::size_t headerEnd = raw.find(kHeaderEnd);
  if (headerEnd == std::string::npos) return FailureAnswer(502, "the module's answer has no header lines");
  const bool hasLength = LowerCase("\r\n" + raw.substr(0, headerEnd)).find("\r\ncontent-length:") != std::string::npos;
  const std::size_t size = raw.size() - headerEnd - kHeaderEnd.size();
  return std::string(kCommonHeaders) + CauseHeader(causes) +
         (hasLength ? "" : "Content-Length: " + std::to_string(size) + "\r\n") + raw;
}

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
      return JsonAnswer(200, answer.json, answer.causes);
    case ApiAnswer::Kind::kRaw:
      return RawAnswer(answer.raw, answer.causes);
    case ApiAnswer::Kind::kBadParameter:
      return FailureAnswer(400, "the parameter \"" + answer.parameter + "\" has a wrong type or is missing",
                           answer.parameter);
    case ApiAnswer::Kind::kException:
      LogFailure("The module failed: " + answer.reason);
      return FailureAnswer(500, "the module failed; the recorder's log says why");
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
