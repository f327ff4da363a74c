#include "recorder/http/cgi_answer.h"

#include <string_view>

#include "recorder/utility/log.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

std::string CauseHeader(const std::string& causes) {
  return causes.empty() ? "" : "Recorder-Cause: " + causes + "\r\n";
}

/// A module's own header lines and body. The length is what tells a client that a worker ended in the middle of it.
std::string RawAnswer(const std::string& raw, const std::string& causes) {
  constexpr std::string_view kHeaderEnd = "\r\n\r\n";
  const std::size_t headerEnd = raw.find(kHeaderEnd);
  if (headerEnd == std::string::npos) return FailureAnswer(502, "the module's answer has no header lines");
  const bool hasLength = LowerCase("\r\n" + raw.substr(0, headerEnd)).find("\r\ncontent-length:") != std::string::npos;
  const std::size_t size = raw.size() - headerEnd - kHeaderEnd.size();
  return CommonHeaders() + CauseHeader(causes) + (hasLength ? "" : "Content-Length: " + std::to_string(size) + "\r\n") +
         raw;
}

}  // namespace

std::string ToCgi(const ApiAnswer& answer) {
  switch (answer.kind) {
    case ApiAnswer::Kind::kJson:
      return JsonTextAnswer(200, answer.json, CauseHeader(answer.causes));
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

}  // namespace recorder
