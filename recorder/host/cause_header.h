#pragma once

#include <string>

#include "recorder/host/api_call.h"
#include "recorder/request/request_scope.h"

namespace recorder {

/// What the header "Recorder-Cause" of an answer with `data` says, after all threads of the call have ended: the name
/// of one Outcome, or for a list one for each entry of the answer, as a list of tokens (RFC 8941 section 3.1). "" when
/// there is nothing to tell: the method asks no camera, the call failed before it could, an entry is missing for lack
/// of memory, or the value is longer than kLargestCauses.
std::string CausesOf(const ApiCall& call, const Json::Value& data, const RequestScope& scope);

}  // namespace recorder
