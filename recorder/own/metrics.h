#pragma once

#include "recorder/http/json_answer.h"
#include "recorder/utility/config.h"

namespace recorder {

/// What this server has counted, and what it is now, for Prometheus: at most 40 series besides the histogram of answer
/// times. Throws RecordsError.
OwnAnswer AnswerMetrics(const Config& config);

}  // namespace recorder
