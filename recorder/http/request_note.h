#pragma once

#include <string>
#include <string_view>

#include "recorder/http/exchange.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/rung_times.h"

namespace recorder {

/// What one request came to, for its line in the log and for the counts.
struct RequestNote {
  std::string method;      ///< of the API, such as "CameraTest"; else verb and address, without the query
  std::string user = {};   ///< "": none, or not known
  std::string cause = {};  ///< as the header Recorder-Cause has it; "": none
  RungTimes rungs = {};
  bool isQuiet = false;   ///< no line and no count if it works: another process goes on, or it is asked all the time
  bool hasLogin = false;  ///< somebody wants in by it: a refusal counts as a login that was refused
  bool isTimed = true;    ///< false: it is answered for as long as whoever asked stays
  Clock::time_point begin = Clock::now();
};

/// The note of a request that begins.
RequestNote NoteOf(const Exchange& exchange);

/// Writes the line of a request whose answer is `answer`, as a CGI program gives it, or what is left of that, and
/// counts it.
void TakeDown(const RequestNote& note, std::string_view answer);

}  // namespace recorder
