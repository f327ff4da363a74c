// long_kill: kill -9 of workers, recorderctl and the server at random moments, while cameras are stored and asked.

#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "recorder/utility/clock.h"
#include "rig/callers.h"
#include "rig/questions.h"
#include "tests/long/kill_trial.h"
#include "tests/long/record_keeper.h"

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

constexpr VictimKind kVictims[] = {
    {Victim::kWorker, "worker", 8},
    {Victim::kControl, "recorderctl camera", 8},
    {Victim::kServerTree, "server with all its processes", 2},
    {Victim::kServe, "recorderctl serve alone", 1},
    {Victim::kWebServer, "lighttpd alone", 1},
};

bool IsServer(Victim victim) { return victim != Victim::kWorker && victim != Victim::kControl; }

class Trial : private KillTrial {
 public:
  explicit Trial(const KillOptions& options, const TempFolder& models)
      : KillTrial("Kills", options,
                  {.testMs = 10'000,
                   .pictureMs = 15'000,
                   .workers = kCameraWorkers,
                   .modelsFolder = WriteModels(models, kCallers)}),
        cameras_(CameraConfigs(kCallers)),
        keeper_(recorder_),
        questioners_(MakeQuestioners(recorder_, cameras_, kCallers, options.seed)) {}
  ~Trial() { EndServers(); }
  Trial(const Trial&) = delete;
  Trial& operator=(const Trial&) = delete;

  int Run() {
    PromiseAllAnswered("before the first kill", questioners_.size());
    RunRounds(kVictims, [this](Victim victim) { Round(victim); });
    Summarize();
    return report_.ExitStatus();
  }

 private:
  using KillTrial::Expect;
  void Expect(const std::string& mistake) { Expect(mistake.empty(), mistake); }

  /// So many callers, one after another, ask each kind of question once.
  void PromiseAllAnswered(const std::string& when, std::size_t count) {
    for (Questioner& questioner : std::span(questioners_).first(count)) {
      std::vector<Question> questions = {questioner.AskOnvif(), questioner.AskKept(), questioner.RawPicture(),
                                         questioner.Capability()};
      const auto next = [&questions, at = std::size_t{0}]() mutable { return questions[at++]; };
      const Tally tally = Callers(recorder_.Port(), {next}, static_cast<long>(questions.size())).Wait();
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

  void Round(Victim victim) {
    Tally tally;
    {
      const std::jthread storing([this](const std::stop_token& stop) { StoreCameras(stop); });
      Callers callers(recorder_.Port(), Sources());
      const std::vector<ProcessInfo> servers = StrikeWithin(kLongestPrelude, victim);
      Expect(CapabilityFileMistake(recorder_.StateFolder()));
      if (victim == Victim::kWorker) AwaitReplacement(servers);
      if (IsServer(victim)) StartAgain(servers, kEndLimit);
      std::this_thread::sleep_for(kSequel);
      tally = callers.Stop();
    }
    Judge(victim, tally);
    Expect(keeper_.Mistake());
    Expect(CapabilityFileMistake(recorder_.StateFolder()));
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

  /// `before` still has the worker that was killed.
  void AwaitReplacement(const std::vector<ProcessInfo>& before) {
    const auto isNew = [&](const ProcessInfo& worker) {
      return std::ranges::find(before, worker.id, &ProcessInfo::id) == before.end();
    };
    const auto isReplaced = [&] {
      const std::vector<ProcessInfo> workers = Descendants(getpid(), "recorder-webapi");
      return workers.size() == kCameraWorkers + kListWorkers && std::ranges::any_of(workers, isNew);
    };
    const auto end = Clock::now() + kReplacementLimit;
    bool isThere = isReplaced();
    for (; !isThere && Clock::now() < end; isThere = isReplaced()) std::this_thread::sleep_for(milliseconds(5));
    Expect(isThere, "the worker was not replaced");
  }

  void Summarize() {
    NoteKills();
    report_.Note(std::to_string(all_.Asked()) + " requests meanwhile: " + std::to_string(all_.answered) +
                 " answered, " + std::to_string(all_.failed) + " with a 5xx (" + std::to_string(paid_) +
                 " of them for a killed worker), " + std::to_string(all_.unanswered) + " lost with the server");
    report_.Promise(report_.ExitStatus() == 0, std::to_string(keeper_.Acknowledged()) + " acknowledged cameras of " +
                                                   std::to_string(keeper_.Tried()) +
                                                   " tried are there; no half file, no half answer; a killed worker "
                                                   "costs one request at most");
  }

  const SimCameras cameras_;
  RecordKeeper keeper_;
  std::vector<Questioner> questioners_;
  Tally all_;
  long paid_ = 0;  ///< requests that a killed worker cost
};

}  // namespace

}  // namespace long_tests

int main(int argc, char** argv) {
  const char about[] = "Kills the processes of a recorder, all on 127.0.0.1, and looks what is left.";
  return long_tests::RunKills(argc, argv, "long_kill", about, [](const auto& options) {
    const rig::TempFolder models;
    return long_tests::Trial(options, models).Run();
  });
}
