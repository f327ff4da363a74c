// long_kill: kill -9 of workers, recorderctl and the server at random moments, while cameras are stored and asked.

#include <sys/prctl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <iostream>
#include <map>
#include <random>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "recorder/utility/clock.h"
#include "rig/callers.h"
#include "rig/processes.h"
#include "rig/questions.h"
#include "rig/report.h"
#include "tests/long/lasting_recorder.h"
#include "tests/long/record_keeper.h"
#include "tests/long/victims.h"

namespace long_tests {

using namespace rig;

namespace {

using recorder::Clock;
using std::chrono::milliseconds;

constexpr int kCameraWorkers = 4;
constexpr int kListWorkers = 2;               // the server's default
constexpr int kCallers = 3 * kCameraWorkers;  // so that requests wait while a worker is killed
constexpr std::size_t kCallersAfterwards = 3;
constexpr int kLongestPrelude = 200;  // milliseconds
constexpr milliseconds kSequel{100};
constexpr milliseconds kReplacementLimit{5000};
constexpr milliseconds kEndLimit{5000};

struct Options {
  int rounds = 200;
  unsigned int seed = std::random_device()();
};

bool IsServer(Victim victim) { return victim != Victim::kWorker && victim != Victim::kControl; }

class Trial {
 public:
  explicit Trial(const Options& options)
      : options_(options),
        random_(options.seed),
        cameras_(CameraConfigs(kCallers)),
        recorder_({.testMs = 10'000,
                   .pictureMs = 15'000,
                   .workers = kCameraWorkers,
                   .modelsFolder = WriteModels(folder_, kCallers)}),
        keeper_(recorder_.Asked()),
        questioners_(MakeQuestioners(recorder_.Asked(), cameras_, kCallers, options.seed)) {}
  ~Trial() { EndServers(); }
  Trial(const Trial&) = delete;
  Trial& operator=(const Trial&) = delete;

  int Run() {
    report_.Heading("Kills: " + std::to_string(options_.rounds) + " rounds, seed " + std::to_string(options_.seed));
    PromiseAllAnswered("before the first kill", questioners_.size());
    for (int round = 1; round <= options_.rounds; ++round) {
      round_ = round;
      random_.seed(options_.seed + static_cast<unsigned int>(round));  // however often the rounds before have asked it
      Round(ChooseVictim());
    }
    Summarize();
    return report_.ExitStatus();
  }

 private:
  const VictimKind& ChooseVictim() {
    std::vector<int> weights;
    for (const VictimKind& kind : kVictims) weights.push_back(kind.weight);
    return kVictims[std::discrete_distribution<std::size_t>(weights.begin(), weights.end())(random_)];
  }

  /// A broken promise is told at once, a kept one in the summary.
  void Expect(bool isKept, const std::string& mistake) {
    if (!isKept) report_.Promise(false, "round " + std::to_string(round_) + " (" + victim_ + "): " + mistake);
  }
  void Expect(const std::string& mistake) { Expect(mistake.empty(), mistake); }

  /// So many callers, one after another, ask each kind of question once.
  void PromiseAllAnswered(const std::string& when, std::size_t count) {
    for (Questioner& questioner : std::span(questioners_).first(count)) {
      std::vector<Question> questions = {questioner.AskOnvif(), questioner.AskKept(), questioner.RawPicture(),
                                         questioner.Capability()};
      const auto next = [&questions, at = std::size_t{0}]() mutable { return questions[at++]; };
      const Tally tally = Callers(recorder_.Asked().Port(), {next}, static_cast<long>(questions.size())).Wait();
      Expect(tally.answered == tally.Asked(), when + ": " + tally.FirstTrouble());
    }
  }

  std::vector<Callers::Source> Sources() {
    static constexpr std::array kKinds = {&Questioner::AskOnvif, &Questioner::AskKept, &Questioner::Camera};
    std::vector<Callers::Source> sources;
    for (Questioner& questioner : questioners_) {
      sources.emplace_back([&questioner, at = 0U]() mutable { return (questioner.*kKinds[at++ % kKinds.size()])(); });
    }
    return sources;
  }

  void StoreCameras(const std::stop_token& stop) {
    while (!stop.stop_requested()) {
      keeper_.AddOne();
      if (!stop.stop_requested()) keeper_.ImportSome();
    }
  }

  void Round(const VictimKind& kind) {
    victim_ = kind.name;
    Tally tally;
    {
      const std::jthread storing([this](const std::stop_token& stop) { StoreCameras(stop); });
      Callers callers(recorder_.Asked().Port(), Sources());
      std::this_thread::sleep_for(milliseconds(std::uniform_int_distribution(0, kLongestPrelude)(random_)));
      const std::vector<ProcessInfo> servers = ServerProcesses();
      if (Strike(kind.victim, random_)) ++kills_[kind.name];
      Expect(CapabilityFileMistake(recorder_.Asked().StateFolder()));
      if (kind.victim == Victim::kWorker) AwaitReplacement();
      if (IsServer(kind.victim)) StartAgain(servers);
      std::this_thread::sleep_for(kSequel);
      tally = callers.Stop();
    }
    Judge(kind.victim, tally);
    Expect(keeper_.Mistake());
    Expect(CapabilityFileMistake(recorder_.Asked().StateFolder()));
    PromiseAllAnswered("the next request", kCallersAfterwards);
  }

  void Judge(Victim victim, const Tally& tally) {
    all_.Add(tally);
    const std::string trouble = tally.FirstTrouble();
    Expect(tally.wrong + tally.stray == 0, "an answer that is not right: " + trouble);
    if (IsServer(victim)) return;
    Expect(tally.unanswered == 0, "a request without an answer: " + trouble);
    const int mostFailed = victim == Victim::kWorker ? 1 : 0;
    Expect(tally.failed <= mostFailed, std::to_string(tally.failed) + " failed requests: " + trouble);
    if (victim == Victim::kWorker) paid_ += tally.failed;
  }

  void AwaitReplacement() {
    const auto areAllThere = [] {
      return Descendants(getpid(), "recorder-webapi").size() == kCameraWorkers + kListWorkers;
    };
    for (const auto end = Clock::now() + kReplacementLimit; !areAllThere() && Clock::now() < end;) {
      std::this_thread::sleep_for(milliseconds(5));
    }
    Expect(areAllThere(), "the worker was not replaced");
  }

  void EndServers() {
    for (auto servers = ServerProcesses(); !servers.empty(); servers = ServerProcesses()) {
      Strike(Victim::kServerTree, random_);
      WaitForEnd(servers, kEndLimit);
    }
  }

  void StartAgain(const std::vector<ProcessInfo>& servers) {
    if (!WaitForEnd(servers, kEndLimit)) {
      for (const ProcessInfo& process : ServerProcesses()) Expect(false, process.program + " outlived its server");
      EndServers();
    }
    recorder_.StartAgain();
  }

  void Summarize() {
    for (const auto& [name, count] : kills_) report_.Note("killed " + std::to_string(count) + " x " + name);
    report_.Note(std::to_string(all_.Asked()) + " requests meanwhile: " + std::to_string(all_.answered) +
                 " answered, " + std::to_string(all_.failed) + " with a 5xx (" + std::to_string(paid_) +
                 " of them for a killed worker), " + std::to_string(all_.unanswered) + " lost with the server");
    report_.Promise(report_.ExitStatus() == 0, std::to_string(keeper_.Acknowledged()) + " acknowledged cameras of " +
                                                   std::to_string(keeper_.Tried()) +
                                                   " tried are there; no half file, no half answer; a killed worker "
                                                   "costs one request at most");
  }

  const Options options_;
  std::mt19937 random_;
  const TempFolder folder_;
  Report report_;
  const SimCameras cameras_;
  LastingRecorder recorder_;
  RecordKeeper keeper_;
  std::vector<Questioner> questioners_;
  int round_ = 0;
  std::string victim_ = "nobody";
  std::map<std::string, int> kills_;
  Tally all_;
  long paid_ = 0;  ///< requests that a killed worker cost
};

}  // namespace

}  // namespace long_tests

int main(int argc, char** argv) {
  long_tests::Options options;
  CLI::App app("Kills the processes of a recorder, all on 127.0.0.1, and looks what is left.", "long_kill");
  app.add_option("--rounds", options.rounds)->check(CLI::Range(1, 1'000'000))->capture_default_str();
  app.add_option("--seed", options.seed, "what the choice of victims and moments begins with (default: random)");
  CLI11_PARSE(app, argc, argv);
  // A killed process reads no more; a handler, unlike SIG_IGN, is not handed on to the programs that are started.
  std::signal(SIGPIPE, [](int /*signal*/) {});
  prctl(PR_SET_CHILD_SUBREAPER, 1);  // processes that outlive their server stay in sight
  try {
    const rig::TempFolder folder;  // what a killed server leaves in the folder of temporary files goes with it
    setenv("TMPDIR", folder.Path().c_str(), 1);
    return long_tests::Trial(options).Run();
  } catch (const std::exception& error) {
    std::cerr << "long_kill: " << error.what() << "\n";
    return 1;
  }
}
