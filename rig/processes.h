#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

// What Linux tells of running processes (proc(5)).

namespace rig {

struct ProcessInfo {
  pid_t id = -1;
  std::string program;             ///< name of the executable file
  std::vector<std::string> words;  ///< its command line
};

/// Children of `ancestor`, their children and so on, parents first. A process that has ended is none, even if its
/// parent has not taken notice.
std::vector<ProcessInfo> Descendants(pid_t ancestor);
/// Those of one program.
std::vector<ProcessInfo> Descendants(pid_t ancestor, const std::string& program);

/// Memory in use now, in KiB.
long ResidentKiB(pid_t process);
/// The most that was ever in use, in KiB.
long PeakKiB(pid_t process);
int OpenDescriptors(pid_t process);

/// Sends SIGKILL to a process of ours; false when it was no longer there. Another process that has got its number is
/// left alone.
bool Kill(const ProcessInfo& process);

}  // namespace rig
