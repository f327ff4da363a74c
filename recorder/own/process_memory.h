#pragma once

#include <sys/types.h>

namespace recorder {

/// Bytes of memory of a process and all that it has started, and these in turn, without what they share with files, as
/// proc(5) has it. What several hold together counts once, but for processes that this one may not look into. Those
/// that have ended meanwhile have none.
double OwnBytesOfAll(pid_t process);

}  // namespace recorder
