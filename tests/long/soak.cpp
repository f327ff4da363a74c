// long_soak: a recorder with four times as many callers as workers, with hostile cameras, and with idle clients.

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <map>
#include <random>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "rig/callers.h"
#include "rig/cameras.h"
#include "rig/command_line.h"
#include "rig/processes.h"
#include "rig/questions.h"
#include "rig/recorder.h"
#include "rig/report.h"

namespace long_tests {

using namespace rig;

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr int kCameraWorkers = 4;
constexpr int kListWorkers = 2;  // the server's default
constexpr int kCallers = 4 * (kCameraWorkers + kListWorkers);
constexpr seconds kFoldersUnwatched{2};  // then each worker has a descriptor more, which watches them
constexpr long kWarmUpRequests = 1000;
constexpr long kKiBInMiB = 1024;
constexpr double kMostGrowth = 0.05;
constexpr int kLeastHostileLists = 6;
constexpr long kMostPeakMiB = 200;  // of a worker
constexpr long kMostKeptMiB = 20;   // more than before
constexpr int kIdleClients = 400;
constexpr int kMostConnections = 256;  // the server's limits
constexpr seconds kLongestIdle{10};    // then the server waits for up to 5 s more whether the client closes
constexpr seconds kSilenceLimit{60};   // of an idle client
constexpr int kServersOwnDescriptors = 40;

struct Options {
  int seconds = 120;
  unsigned int seed = std::random_device()();
};

/// The recorder with its cameras, and the phases of the trial.
class Soak {
 public:
  explicit Soak(const Options& options)
      : options_(options),
        cameras_(CameraConfigs(kCallers)),
        recorder_({.testMs = 5000,
                   .pictureMs = 15'000,
                   .workers = kCameraWorkers,
                   .modelsFolder = WriteModels(folder_, kCallers)}) {
    for (int i = 0; i < 3; ++i) {
      recorder_.AddCamera("Rig", "C" + std::to_string(i), cameras_.Port("camera " + std::to_string(i)), "admin",
                          kSecret);
    }
    questioners_ = MakeQuestioners(recorder_, cameras_, kCallers, options.seed);
  }

  int Run() {
    Load();
    HostileCameras();
    Idle();
    return report_.ExitStatus();
  }

 private:
  void PromiseAllAnswered(const std::string& name, const Tally& tally) {
    const auto promise = [&](long count, const char* fate) {
      report_.Promise(count == 0, name + ": " + std::to_string(count) + " of " + std::to_string(tally.Asked()) +
                                      " requests " + fate);
    };
    promise(tally.failed + tally.unanswered, "lost");
    promise(tally.wrong, "answered with what belongs to no such request");
    promise(tally.stray, "answered twice");
    for (const std::string& trouble : tally.troubles) report_.Note(trouble);
  }

  /// What a worker holds while no request is under way.
  struct Holdings {
    long kiB = 0;
    int descriptors = 0;
  };

  static std::map<pid_t, Holdings> WorkerHoldings() {
    std::this_thread::sleep_for(milliseconds(500));
    std::map<pid_t, Holdings> all;
    for (const ProcessInfo& worker : Descendants(getpid(), "recorder-webapi")) {
      all[worker.id] = {ResidentKiB(worker.id), OpenDescriptors(worker.id)};
    }
    return all;
  }

  void Compare(const std::map<pid_t, Holdings>& early, const std::map<pid_t, Holdings>& late) {
    for (const auto& [id, before] : early) {
      const std::string name = "worker " + std::to_string(id) + ": ";
      const auto after = late.find(id);
      report_.Promise(after != late.end(), name + "still the same process");
      if (after == late.end()) continue;
      const double growth = static_cast<double>(after->second.kiB) / static_cast<double>(before.kiB) - 1;
      report_.Promise(growth <= kMostGrowth, name + "memory " + std::to_string(before.kiB) + " KiB, then " +
                                                 std::to_string(after->second.kiB) + " KiB, " +
                                                 NumberText(100 * growth) + " %");
      report_.Promise(after->second.descriptors <= before.descriptors,
                      name + "descriptors " + std::to_string(before.descriptors) + ", then " +
                          std::to_string(after->second.descriptors));
    }
  }

  void Load() {
    report_.Heading("Load: " + std::to_string(kCallers) + " callers, " + std::to_string(kCameraWorkers) + " + " +
                    std::to_string(kListWorkers) + " workers, all methods, seed " + std::to_string(options_.seed));
    const auto sources = SourcesOf(questioners_, &Questioner::Any);
    Tally tally = Callers(recorder_.Port(), sources, kWarmUpRequests).Wait();
    std::this_thread::sleep_for(kFoldersUnwatched);
    tally.Add(Callers(recorder_.Port(), sources, kWarmUpRequests).Wait());
    const auto early = WorkerHoldings();
    Callers callers(recorder_.Port(), sources);
    std::this_thread::sleep_for(seconds(options_.seconds));
    const Tally load = callers.Stop();
    const auto late = WorkerHoldings();

    tally.Add(load);
    PromiseAllAnswered("all methods", tally);
    report_.Promise(early.size() == kCameraWorkers + kListWorkers, std::to_string(early.size()) + " workers");
    Compare(early, late);
  }

  void HostileCameras() {
    report_.Heading(
        "Hostile cameras: a caller with lists of ten that answer 4.1 million '&', 24,000 elements, or pictures without "
        "end");
    const auto before = WorkerHoldings();
    const Callers::Source ask = [&] {
      recorder_.ForgetCameras();  // what is known of a camera is not asked again
      return questioners_.front().HostileBatch();
    };
    PromiseAllAnswered("hostile cameras",
                       Callers(recorder_.Port(), {ask}, std::max(kLeastHostileLists, options_.seconds / 5)).Wait());
    for (const auto& [id, after] : WorkerHoldings()) {
      const std::string name = "worker " + std::to_string(id) + ": ";
      const long peak = PeakKiB(id) / kKiBInMiB;
      report_.Promise(peak <= kMostPeakMiB, name + "at most " + std::to_string(peak) + " MiB at any time");
      const auto former = before.find(id);
      report_.Promise(former != before.end(), name + "still the one that was there before");
      const long kept = former == before.end() ? 0 : (after.kiB - former->second.kiB) / kKiBInMiB;
      report_.Promise(kept <= kMostKeptMiB, name + std::to_string(kept) + " MiB more than before");
    }
  }

  int ServerDescriptors() const {
    const auto servers = Descendants(getpid(), "lighttpd");
    return servers.empty() ? 0 : OpenDescriptors(servers.front().id);
  }

  void Idle() {
    report_.Heading("Idle clients: " + std::to_string(kIdleClients) + " connect and say nothing");
    std::vector<Connection> clients;
    clients.reserve(kIdleClients);
    for (int i = 0; i < kIdleClients; ++i) clients.emplace_back(recorder_.Port(), kSilenceLimit);
    std::this_thread::sleep_for(seconds(1));
    const int descriptors = ServerDescriptors();
    report_.Promise(descriptors <= kMostConnections + kServersOwnDescriptors,
                    "the web server has " + std::to_string(descriptors) + " descriptors open");
    const auto start = std::chrono::steady_clock::now();
    const Tally tally =
        Callers(recorder_.Port(), SourcesOf(std::span(questioners_).first(1), &Questioner::List), 1).Wait();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    PromiseAllAnswered("a caller in earnest", tally);
    report_.Promise(time < 2 * kLongestIdle, "it is answered after " + NumberText(time.count()) + " s");
  }

  const Options options_;
  const TempFolder folder_;
  Report report_;
  const SimCameras cameras_;
  const TestRecorder recorder_;
  std::vector<Questioner> questioners_;
};

}  // namespace

}  // namespace long_tests

int main(int argc, char** argv) {
  long_tests::Options options;
  const char about[] = "Loads a recorder and its simulated cameras, all on 127.0.0.1, and prints what it stands.";
  const std::vector<rig::ProgramOption> known{
      {"--seconds", &options.seconds, "duration of the load; the other phases take as long together", 1, 86400},
      {"--seed", &options.seed, "what the callers' choices begin with (default: random)"}};
  if (const auto status = rig::ReadCommandLine("long_soak", about, known, argc, argv)) return *status;
  try {
    return long_tests::Soak(options).Run();
  } catch (const std::exception& error) {
    std::cerr << "long_soak: " << error.what() << "\n";
    return 1;
  }
}
