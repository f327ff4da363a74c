#include "bench/process_use.h"

#include <unistd.h>

#include <sstream>

#include "rig/processes.h"
#include "rig/recorder.h"

namespace bench {

namespace {

constexpr char kWatch[] = "recorder-watch";

std::string FileOf(pid_t process, const char* file) {
  return rig::ReadText("/proc/" + std::to_string(process) + '/' + file);
}

struct Stat {
  pid_t parent = -1;
  double seconds = 0;
  double secondsOfEnded = 0;  // children that were waited for
  int nice = 0;
};

/// Fields 4, 14 to 17 and 19 of its line; the name of the program may hold anything.
Stat StatOf(pid_t process) {
  const std::string line = FileOf(process, "stat");
  std::istringstream fields(line.substr(line.rfind(')') + 1));
  Stat stat;
  std::string skipped;
  fields >> skipped >> stat.parent;
  for (int field = 5; field < 14; ++field) fields >> skipped;
  double user = 0;
  double system = 0;
  double endedUser = 0;
  double endedSystem = 0;
  fields >> user >> system >> endedUser >> endedSystem >> skipped >> stat.nice;
  const auto ticks = static_cast<double>(sysconf(_SC_CLK_TCK));
  stat.seconds = (user + system) / ticks;
  stat.secondsOfEnded = (endedUser + endedSystem) / ticks;
  return stat;
}

long MemoryOf(pid_t process) {
  const std::string text = FileOf(process, "smaps_rollup");
  const std::size_t at = text.find("\nPss:");
  return at == std::string::npos ? 0 : std::stol(text.substr(at + 5));
}

/// Copies of recorder-watch are its children; those that check let others go first.
std::string KindOf(const rig::ProcessInfo& process, const Stat& stat, const std::string& parentProgram) {
  if (process.program != kWatch) return process.program;
  if (parentProgram != kWatch) return kDecider;
  return stat.nice > 0 ? kCheckers : "recorder-watch, webhook";
}

}  // namespace

std::map<std::string, ProcessUse> UseOf(pid_t ancestor) {
  std::map<std::string, ProcessUse> uses;
  std::map<pid_t, std::string> programs;
  for (const rig::ProcessInfo& process : rig::Descendants(ancestor)) {
    const Stat stat = StatOf(process.id);
    programs[process.id] = process.program;
    const std::string parent = programs[stat.parent];
    ProcessUse& use = uses[KindOf(process, stat, parent)];
    ++use.processes;
    use.seconds += stat.seconds;
    use.memoryKiB += MemoryOf(process.id);
    if (process.program == kWatch) uses[kCheckers].seconds += stat.secondsOfEnded;
  }
  return uses;
}

}  // namespace bench
