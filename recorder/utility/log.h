#pragma once

#include <string>

namespace recorder {

/// Logs a failure that the recorder itself found, in an entry like those of VTPrintf without categories, with the
/// caller's place. `text` has no final newline, may be of any length (a long line is cut), and holds no secret. Control
/// characters are escaped. Any thread.
void LogFailure(const std::string& text, const char* file = __builtin_FILE(), int line = __builtin_LINE(),
                const char* function = __builtin_FUNCTION());

/// From now on LogFailure writes nothing and hands its text to `receiver`: for a process that may not write a log.
void SendLogTo(void (*receiver)(const std::string& text));

}  // namespace recorder
