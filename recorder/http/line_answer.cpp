#include "recorder/http/line_answer.h"

#include "recorder/utility/json_text.h"

namespace recorder {

namespace {

constexpr char kHead[] = "Content-Type: application/x-ndjson\r\n\r\n";

std::string LineOf(const Json::Value& json) { return ToText(json) + '\n'; }

}  // namespace

bool LineAnswer::Tell(const Json::Value& line) {
  const std::string head = hasBegun_ ? "" : CommonHeaders() + kHead;
  hasBegun_ = true;
  return send_(head + LineOf(line));
}

std::string LineAnswer::Rest(const OwnAnswer& end) const { return hasBegun_ ? LineOf(end.json) : ToCgi(end); }

}  // namespace recorder
