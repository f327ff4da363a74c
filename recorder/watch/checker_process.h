#pragma once

#include "recorder/watch/checkers.h"

namespace recorder {

/// What a checker does until the process that made it is gone: it takes jobs from the socket `jobs`, one after the
/// other, and answers each there. It keeps no other descriptor of that process but standard output and error, and lets
/// the programs that serve callers go first, where a process may do that. Does not return.
[[noreturn]] void ServeJobs(int jobs, const CheckWork& work);

}  // namespace recorder
