#pragma once

#include "rig/recorder.h"
#include "rig/report.h"

namespace bench {

/// Rows of how long a recorder with so many stored cameras and their events takes to tell of them. Throws WrongAnswer.
void AddWatchAnswerRows(rig::Report& table, const rig::TestRecorder& recorder, int cameras);

}  // namespace bench
