#pragma once

#include <chrono>
#include <random>
#include <vector>

#include "rig/processes.h"

// Processes of this program's own recorder, and their end.

namespace long_tests {

enum class Victim { kWorker, kControl, kServerTree, kServe, kWebServer, kWatch, kChecker };

struct VictimKind {
  Victim victim;
  const char* name;
  int weight;  ///< how often it is chosen
};

constexpr VictimKind kVictims[] = {
    {Victim::kWorker, "worker", 8},
    {Victim::kControl, "recorderctl camera", 8},
    {Victim::kServerTree, "server with all its processes", 2},
    {Victim::kServe, "recorderctl serve alone", 1},
    {Victim::kWebServer, "lighttpd alone", 1},
};

/// "recorderctl serve", lighttpd, the workers and recorder-watch with its copies, whoever their parent is by now.
std::vector<rig::ProcessInfo> ServerProcesses();

/// Kills such a victim; false when there was none.
bool Strike(Victim victim, std::mt19937& random);

/// True once no process of the server is left, whichever it was; false after `limit`. Of `processes`, those that became
/// this program's children are taken notice of, so that they do not stay as zombies.
bool WaitForEnd(const std::vector<rig::ProcessInfo>& processes, std::chrono::milliseconds limit);

}  // namespace long_tests
