#pragma once

#include "recorder/host/module_library.h"
#include "recorder/watch/checkers.h"

namespace recorder {

/// Calls of the module, which outlives the result, as a logged-in user's.
CheckWork ModuleWork(const ModuleLibrary& module);

}  // namespace recorder
