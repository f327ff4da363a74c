#include "recorder/http/line_answer.h"

#include <utility>

#include "recorder/utility/json_text.h"

namespace recorder {

namespace {

std::string LineOf(const Json::Value& json) { return ToText(json) + '\n'; }

}  // namespace

bool LineAnswer::Tell(const Json::Value& line) { return Send(Kind::kLines, "application/x-ndjson", LineOf(line)); }

bool LineAnswer::TellEvents(std::string_view events) { return Send(Kind::kEvents, "text/event-stream", events); }

bool LineAnswer::Send(Kind kind, std::string_view type, std::string_view text) {
  std::string part;
  if (std::exchange(kind_, kind) == Kind::kWhole) {
    part = CommonHeaders() + "Content-Type: " + std::string(type) + "\r\n\r\n";
  }
  return send_(part.append(text));
}

std::string LineAnswer::Rest(const OwnAnswer& end) const {
  if (kind_ == Kind::kEvents) return "";
  return kind_ == Kind::kLines ? LineOf(end.json) : ToCgi(end);
}

}  // namespace recorder
