#include "tests/long/kill_trial.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <iostream>
#include <thread>
#include <vector>

#include "recorder/utility/clock.h"
#include "rig/command_line.h"

namespace long_tests {

using namespace rig;

namespace {

using recorder::Clock;
using std::chrono::milliseconds;

constexpr milliseconds kLookAgain{1};

bool HasWord(const ProcessInfo& process, const std::string& word) {
  return std::find(process.words.begin(), process.words.end(), word) != process.words.end();
}

bool IsVictim(Victim victim, const ProcessInfo& process) {
  const bool isWorker = process.program == "recorder-webapi";
  const bool isWebServer = process.program == "lighttpd";
  const bool isServe = process.program == "recorderctl" && HasWord(process, "serve");
  const bool isWatch = process.program == "recorder-watch";
  if (victim == Victim::kServerTree) return isServe || isWebServer || isWorker || isWatch;
  if (victim == Victim::kWatch || victim == Victim::kChecker) return isWatch;
  if (victim == Victim::kControl) return process.program == "recorderctl" && HasWord(process, "camera");
  return victim == Victim::kWorker ? isWorker : victim == Victim::kServe ? isServe : isWebServer;
}

std::vector<ProcessInfo> Find(Victim victim) {
  std::vector<ProcessInfo> found = Descendants(getpid());
  std::erase_if(found, [&](const ProcessInfo& process) { return !IsVictim(victim, process); });
  if (found.empty()) return found;
  if (victim == Victim::kWatch) found.resize(1);  // the others are copies of it
  if (victim == Victim::kChecker) found.erase(found.begin());
  return found;
}

std::vector<ProcessInfo> ServerProcesses() { return Find(Victim::kServerTree); }

/// Kills such a victim; false when there was none.
bool Strike(Victim victim, std::mt19937& random) {
  constexpr milliseconds kGap{200};  // one "recorderctl camera" follows another
  std::vector<ProcessInfo> found;
  for (const auto end = Clock::now() + kGap; found.empty() && Clock::now() < end;) {
    found = Find(victim);
    if (found.empty()) std::this_thread::sleep_for(kLookAgain);
  }
  std::shuffle(found.begin(), found.end(), random);
  if (victim != Victim::kServerTree && found.size() > 1) found.resize(1);
  return std::count_if(found.begin(), found.end(), [](const ProcessInfo& process) { return Kill(process); }) > 0;
}

/// True once no process of the server is left, whichever it was; false after `limit`. Of `processes`, those that became
/// this program's children are taken notice of, so that they do not stay as zombies.
bool WaitForEnd(const std::vector<ProcessInfo>& processes, milliseconds limit) {
  const auto end = Clock::now() + limit;
  for (;;) {
    const std::vector<ProcessInfo> running = ServerProcesses();
    for (const ProcessInfo& process : processes) waitpid(process.id, nullptr, WNOHANG);
    if (running.empty()) return true;
    if (Clock::now() >= end) return false;
    std::this_thread::sleep_for(milliseconds(5));
  }
}

}  // namespace

KillTrial::KillTrial(const std::string& heading, const KillOptions& options, const TestRecorder::Options& served)
    : options_(options), recorder_(served), served_(served), random_(options.seed) {
  report_.Heading(heading + ": " + std::to_string(options.rounds) + " rounds, seed " + std::to_string(options.seed));
}

void KillTrial::RunRounds(std::span<const VictimKind> victims, const std::function<void(Victim)>& round) {
  std::vector<int> weights;
  for (const VictimKind& kind : victims) weights.push_back(kind.weight);
  for (round_ = 1; round_ <= options_.rounds; ++round_) {
    random_.seed(options_.seed + static_cast<unsigned int>(round_));  // however often the rounds before have asked it
    const auto& kind = victims[std::discrete_distribution<std::size_t>(weights.begin(), weights.end())(random_)];
    victim_ = kind.name;
    round(kind.victim);
  }
}

void KillTrial::Expect(bool isKept, const std::string& mistake) {
  if (!isKept) report_.Promise(false, "round " + std::to_string(round_) + " (" + victim_ + "): " + mistake);
}

std::vector<ProcessInfo> KillTrial::StrikeWithin(int longest, Victim victim) {
  std::this_thread::sleep_for(milliseconds(std::uniform_int_distribution(0, longest)(random_)));
  std::vector<ProcessInfo> servers = ServerProcesses();
  if (Strike(victim, random_)) ++kills_[victim_];
  return servers;
}

void KillTrial::StartAgain(const std::vector<ProcessInfo>& servers, milliseconds limit) {
  if (!WaitForEnd(servers, limit)) {
    std::string names;
    for (const ProcessInfo& process : ServerProcesses()) names += process.program + " ";
    Expect(false, names + "outlived the server");
    EndServers();
  }
  again_.reset();
  std::vector<std::string> command = {std::filesystem::path(PROGRAM_FOLDER) / "recorderctl",
                                      "--config",
                                      recorder_.ConfigFile(),
                                      "serve",
                                      "--workers",
                                      std::to_string(served_.workers),
                                      "--port",
                                      std::to_string(recorder_.Port())};
  if (served_.watchSeconds == 0) command.emplace_back("--no-watch");
  again_ = std::make_unique<Process>(std::move(command), recorder_.StateFolder().parent_path() / "log");
  again_->ReadLine();
}

void KillTrial::EndServers() {
  constexpr std::chrono::seconds kLimit{5};
  for (auto servers = ServerProcesses(); !servers.empty(); servers = ServerProcesses()) {
    Strike(Victim::kServerTree, random_);
    WaitForEnd(servers, kLimit);
  }
}

void KillTrial::NoteKills() {
  for (const auto& [name, count] : kills_) report_.Note("killed " + std::to_string(count) + " x " + name);
}

int RunKills(int argc, char** argv, const std::string& name, const std::string& about,
             const std::function<int(const KillOptions&)>& run) {
  KillOptions options;
  const std::vector<ProgramOption> known{
      {"--rounds", &options.rounds, "", 1, 1'000'000},
      {"--seed", &options.seed, "what the choice of victims and moments begins with (default: random)"}};
  if (const auto status = ReadCommandLine(name, about, known, argc, argv)) return *status;
  // A killed process reads no more; a handler, unlike SIG_IGN, is not handed on to the programs that are started.
  std::signal(SIGPIPE, [](int /*signal*/) {});
  prctl(PR_SET_CHILD_SUBREAPER, 1);  // processes that outlive their server stay in sight
  try {
    const TempFolder folder;  // what a killed server leaves in the folder of temporary files goes with it
    setenv("TMPDIR", folder.Path().c_str(), 1);
    return run(options);
  } catch (const std::exception& error) {
    std::cerr << name << ": " << error.what() << "\n";
    return 1;
  }
}

}  // namespace long_tests
