#pragma once

#include "recorder/http/json_answer.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// What is answered where a camera did not do what was asked: 502, with the cause's name beside the words.
OwnAnswer CameraFailure(Outcome outcome);

}  // namespace recorder
