#pragma once

#include "recorder/http/caller.h"
#include "recorder/own/handlers.h"

namespace recorder {

/// True for a request below /recorder/1/.
bool IsOwn(const HttpRequest& request);

/// Answers a request below /recorder/1/. Throws HttpError, and whatever else the address's handler throws.
OwnAnswer AnswerOwn(const HttpRequest& request, const Caller& caller, OwnTools tools);

}  // namespace recorder
