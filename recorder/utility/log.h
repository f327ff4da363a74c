#pragma once

#include <string>

namespace recorder {

/// Logs a failure of the recorder itself through VTPrintf, with the caller's place. `text` has no final newline and
/// holds no secret. Any thread.
void LogFailure(const std::string& text, const char* file = __builtin_FILE(), int line = __builtin_LINE(),
                const char* function = __builtin_FUNCTION());

}  // namespace recorder
