#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "recorder/utility/log_format.h"

namespace recorder {

// An entry is one line on standard error: time, process, the request's id if there is one, place, and text; or the same
// as a JSON object. Where standard error is the journal's, its priority stands before it (sd-daemon(3)).

/// Logs a failure that the recorder itself found, in an entry like those of VTPrintf without categories, with the
/// caller's place. `text` has no final newline, may be of any length (a long line is cut), and holds no secret. Control
/// characters are escaped. Any thread.
void LogFailure(const std::string& text, const char* file = __builtin_FILE(), int line = __builtin_LINE(),
                const char* function = __builtin_FUNCTION());

/// A name and its value in an entry of values. The name needs no escape in JSON.
using LogField = std::pair<std::string_view, std::variant<std::int64_t, std::string>>;

/// Logs what is no failure: `place: name=1 other="text"`, or members of the JSON object. Any thread.
void LogNote(const std::string& place, const std::vector<LogField>& fields);

/// How entries look from now on. Call before there are threads.
void SetLogFormat(LogFormat format);

/// From now on LogFailure writes nothing and hands its text to `receiver`: for a process that may not write a log.
void SendLogTo(void (*receiver)(const std::string& text));

/// While it lives, each entry names a request by its id: those of the calling thread, or of the whole process, whatever
/// threads a request starts there. One at a time of a kind.
class RequestInLog {
 public:
  enum class Entries { kOfThread, kOfProcess };
  RequestInLog(std::string id, Entries entries);
  ~RequestInLog();
  RequestInLog(const RequestInLog&) = delete;
  RequestInLog& operator=(const RequestInLog&) = delete;

  /// The id of the request that the calling thread works for; "" for none.
  static std::string Current();

 private:
  void Set(std::string id) const;

  const Entries entries_;
};

}  // namespace recorder
