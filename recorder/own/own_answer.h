#pragma once

#include "recorder/http/caller.h"
#include "recorder/http/line_answer.h"

namespace recorder {

/// True for a request below /recorder/1/.
bool IsOwn(const HttpRequest& request);

/// Answers a request below /recorder/1/, of which `lines` tells what comes before the answer. Throws HttpError, and
/// whatever else the address's handler throws.
OwnAnswer AnswerOwn(const HttpRequest& request, const Caller& caller, LineAnswer& lines);

}  // namespace recorder
