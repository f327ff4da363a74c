#pragma once

#include <string>

#include "recorder/request/request_scope.h"
#include "recorder/utility/log.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// Says, as the request's cause and in the log, why no camera of that vendor and model is asked: kUnknownModel or
/// kNoPath.
inline void ReportUnasked(const std::string& vendor, const std::string& model, Outcome cause) {
  RequestScope::Current().SetCause(cause);
  LogFailure("A camera of \"" + vendor + ' ' + model + "\" cannot be asked: " + std::string(Describe(cause)) + ".");
}

}  // namespace recorder
