#pragma once

#include <vector>

#include "recorder/watch/checkers.h"
#include "recorder/watch/run_plan.h"

namespace recorder {

/// The job that knocks at the hosts of these rows. Its answer has a cause for each, kTimedOut for a silent one.
CheckJob KnockJobOf(const std::vector<PlannedRow>& rows);

/// Knocks where that is the job, and leaves all others to `other`.
CheckWork KnockOr(CheckWork other);

}  // namespace recorder
