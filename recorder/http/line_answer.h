#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "recorder/http/json_answer.h"

namespace recorder {

/// An answer that may be told in parts, while more is found out; each is sent on at once. One thread.
class LineAnswer {
 public:
  /// `send`: see Exchange.
  explicit LineAnswer(std::function<bool(std::string_view)> send) : send_(std::move(send)) {}

  /// Sends a line, which is one JSON object (application/x-ndjson, https://github.com/ndjson/ndjson-spec). The last
  /// line is what would have been the whole answer without the others, and has a member "success": an answer without it
  /// was cut off. False when whoever asked has gone, as far as the web server has noticed: nobody needs more of it.
  [[nodiscard]] bool Tell(const Json::Value& line);

  /// Sends server-sent events, as they stand in a text/event-stream (HTML Living Standard, section 9.2), instead of
  /// lines. The same is false. Such an answer may end after any of them.
  [[nodiscard]] bool TellEvents(std::string_view events);

  /// What is left to be sent of the answer, whose end is `end`: its last line, nothing after events, or all of it when
  /// nothing was told.
  std::string Rest(const OwnAnswer& end) const;

 private:
  enum class Kind {
    kWhole,  ///< as long as nothing was told
    kLines,
    kEvents,
  };

  bool Send(Kind kind, std::string_view type, std::string_view text);

  const std::function<bool(std::string_view)> send_;
  Kind kind_ = Kind::kWhole;
};

}  // namespace recorder
