#pragma once

#include "recorder/http/http_request.h"
#include "recorder/http/line_answer.h"
#include "recorder/records/records.h"

namespace recorder {

/// The variable of the environment that tells how many workers may tell events at once; without it, one.
inline constexpr char kStreamsVariable[] = "RECORDER_EVENT_STREAMS";

/// Whether a request wants events as they come (HTML Living Standard, section 9.2).
bool WantsStream(const HttpRequest& request);

/// Tells events that fit `filter` as server-sent ones, from Last-Event-ID on if there is one, else from now on. Returns
/// when whoever asked has gone, and after 50 s: he asks again then, since the worker is others', too. Throws HttpError:
/// 503 where enough workers do the same.
void StreamEvents(const HttpRequest& request, const EventFilter& filter, LineAnswer& answer);

}  // namespace recorder
