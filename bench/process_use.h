#pragma once

#include <sys/types.h>

#include <map>
#include <string>

// What the processes of a recorder cost, by kind, as proc(5) tells it.

namespace bench {

/// Of all processes of one kind.
struct ProcessUse {
  int processes = 0;
  double seconds = 0;  ///< of processors, since their start; of checkers that have ended, too
  long memoryKiB = 0;  ///< their share of what they use together (PSS)
};

inline constexpr char kDecider[] = "recorder-watch, decides";
inline constexpr char kCheckers[] = "recorder-watch, checkers";

/// Of the descendants of `ancestor`, by program; of recorder-watch by what each copy does: kDecider, kCheckers or
/// "recorder-watch, webhook".
std::map<std::string, ProcessUse> UseOf(pid_t ancestor);

}  // namespace bench
