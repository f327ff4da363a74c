#pragma once

#include <vector>

#include "recorder/records/runs.h"
#include "recorder/watch/checkers.h"

namespace recorder {

/// Whether a row of a run needs a call of its own: lists of cameras have no channels, paths, codecs and stream types.
bool IsTestedAlone(const RunCamera& row);

/// The call of the module that tests these rows: one, or several that are not tested alone. It holds their passwords.
CheckJob JobOf(const std::vector<RunRow>& rows);

/// What the rows of these numbers, which a job was made of in that order, came to. Of a call
/// that came to nothing nobody knows whether it logged in somewhere.
std::vector<RowOutcome> OutcomesOf(const std::vector<int>& numbers, const CheckAnswer& answer);

}  // namespace recorder
