#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "rig/processes.h"
#include "rig/recorder.h"
#include "rig/report.h"

namespace long_tests {

enum class Victim { kWorker, kControl, kServerTree, kServe, kWebServer, kWatch, kChecker };

struct VictimKind {
  Victim victim;
  const char* name;
  int weight;  ///< how often it is chosen
};

struct KillOptions {
  int rounds = 200;
  unsigned int seed = std::random_device()();
};

/// Rounds in each of which one process of this program's own recorder is killed. What is asked of it meanwhile, and
/// what must be left, is told by those who derive from it. One thread.
class KillTrial {
 protected:
  KillTrial(const std::string& heading, const KillOptions& options, const rig::TestRecorder::Options& served);

  void RunRounds(std::span<const VictimKind> victims, const std::function<void(Victim)>& round);
  /// A broken promise is told at once, a kept one in the summary.
  void Expect(bool isKept, const std::string& mistake);
  /// Waits so many milliseconds at most, and kills. Returns "recorderctl serve", lighttpd, the workers and
  /// recorder-watch with its copies, as they were before.
  std::vector<rig::ProcessInfo> StrikeWithin(int longest, Victim victim);
  /// Starts the recorder with the same state on the same port once all its processes have ended, for which they have
  /// `limit`. Throws when it does not come up.
  void StartAgain(const std::vector<rig::ProcessInfo>& servers, std::chrono::milliseconds limit);
  void EndServers();
  void NoteKills();

  const KillOptions options_;
  rig::Report report_;
  const rig::TestRecorder recorder_;
  int round_ = 0;

 private:
  const rig::TestRecorder::Options served_;
  std::unique_ptr<rig::Process> again_;
  std::mt19937 random_;
  std::string victim_ = "nobody";
  std::map<std::string, int> kills_;
};

/// What main() does: runs a trial as the command line has it, in a process that is ready for kills.
int RunKills(int argc, char** argv, const std::string& name, const std::string& about,
             const std::function<int(const KillOptions&)>& run);

}  // namespace long_tests
