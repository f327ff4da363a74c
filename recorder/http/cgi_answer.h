#pragma once

#include <string>

#include "recorder/host/api_call.h"
#include "recorder/http/json_answer.h"

namespace recorder {

/// What the module answered, or, with a status of its own, why there is no answer.
std::string ToCgi(const ApiAnswer& answer);

}  // namespace recorder
