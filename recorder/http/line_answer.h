#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "recorder/http/json_answer.h"

namespace recorder {

/// An answer that may be told in lines, while more is found out: each is one JSON object, sent on at once
/// (application/x-ndjson, https://github.com/ndjson/ndjson-spec). The last line is what would have been the whole
/// answer without the others, and has a member "success": an answer without it was cut off. One thread.
class LineAnswer {
 public:
  /// `send`: see Exchange.
  explicit LineAnswer(std::function<bool(std::string_view)> send) : send_(std::move(send)) {}

  /// Sends a line. False when whoever asked has gone, as far as the web server has noticed: nobody needs more of it.
  [[nodiscard]] bool Tell(const Json::Value& line);

  /// What is left to be sent of the answer, whose end is `end`: its last line, or all of it when no line was told.
  std::string Rest(const OwnAnswer& end) const;

 private:
  const std::function<bool(std::string_view)> send_;
  bool hasBegun_ = false;
};

}  // namespace recorder
