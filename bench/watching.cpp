// bench_watching: what it costs a recorder to watch thousands of cameras, more and more often until it is late.

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "bench/comparison.h"
#include "bench/fleet.h"
#include "bench/process_use.h"
#include "bench/watched_recorder.h"
#include "bench/watching_answers.h"
#include "rig/command_line.h"

namespace bench {

using namespace rig;

namespace {

constexpr char kLateness[] = "recorder_watch_lateness_seconds ";
constexpr int kUsualInterval = 300;  // seconds
constexpr int kChangesADay = 2;      // of a camera: it goes down and comes up again

struct Plan {
  int cameras = 10'000;
  int silent = 300;
  int changing = 100;
  int seconds = 20;  // that each row is measured
};

/// The last value in the recorder's metrics.
double Lateness(const TestRecorder& recorder) {
  const std::string text = recorder.Ask("GET", "/metrics", recorder.Login()).body;
  const std::size_t at = text.find(std::string("\n") + kLateness);
  if (at == std::string::npos) throw WrongAnswer("nobody watches");
  return std::stod(text.substr(at + sizeof(kLateness)));
}

/// What a while of watching came to.
struct While {
  double checks = 0;    ///< a second, of cameras that answer
  double decider = 0;   ///< of one processor
  double checkers = 0;  ///< the same
  double others = 0;    ///< the same
  double mostLate = 0;  ///< seconds
  std::map<std::string, ProcessUse> uses;
};

double SecondsBetween(const std::map<std::string, ProcessUse>& before, const std::map<std::string, ProcessUse>& after,
                      const std::string& kind) {
  const auto first = before.find(kind);
  const auto last = after.find(kind);
  if (last == after.end()) return 0;
  return std::max(last->second.seconds - (first == before.end() ? 0 : first->second.seconds), 0.0);
}

While Measure(const Fleet& fleet, const TestRecorder& recorder, int seconds) {
  const auto before = UseOf(getpid());
  const Fleet::Seen seen = fleet.All();
  const auto start = std::chrono::steady_clock::now();
  While result;
  for (int i = 0; i < seconds; ++i) {
    std::this_thread::sleep_until(start + std::chrono::seconds(i + 1));
    result.mostLate = std::max(result.mostLate, Lateness(recorder));
  }
  const double time = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  result.uses = UseOf(getpid());
  result.checks = static_cast<double>(fleet.All().tests - seen.tests) / time;
  result.decider = SecondsBetween(before, result.uses, kDecider) / time;
  result.checkers = SecondsBetween(before, result.uses, kCheckers) / time;
  for (const auto& [kind, use] : result.uses) {
    if (kind != kDecider && kind != kCheckers) result.others += SecondsBetween(before, result.uses, kind) / time;
  }
  return result;
}

void CheckSeen(const Fleet& fleet) {
  const Fleet::Seen seen = fleet.All();
  if (seen.refusedLogins > 0) throw WrongAnswer("a camera saw a wrong login");
  if (seen.mostAtOnce > 1) throw WrongAnswer("a camera was contacted by two at once");
}

std::string Percent(double share) { return NumberText(share * 100, 1) + " %"; }

void AddHead(Report& table) {
  table.Row(
      {"Interval", "Due a second", "Answered a second", "At most late", "Deciding", "Checkers", "Processes", "Past"});
  table.Row({"---:", "---:", "---:", "---:", "---:", "---:", "---:", "---"});
}

While AddLoad(Report& table, const Fleet& fleet, const Plan& plan, const PastOptions& past, const std::string& what) {
  const auto recorder = WatchedRecorder(fleet, past);
  std::this_thread::sleep_for(std::chrono::seconds(10));  // it has read its records, and made its checkers
  While result = Measure(fleet, *recorder, plan.seconds);
  CheckSeen(fleet);
  const int answering = plan.cameras - plan.silent;
  table.Row({std::to_string(past.watchSeconds) + " s",
             NumberText(static_cast<double>(plan.cameras) / past.watchSeconds, 0) + ", " +
                 NumberText(static_cast<double>(answering) / past.watchSeconds, 1) + " of them answer",
             NumberText(result.checks), NumberText(result.mostLate, 0) + " s", Percent(result.decider),
             Percent(result.checkers), std::to_string(result.uses.at(kCheckers).processes), what});
  return result;
}

void AddMemory(Report& table, const While& result) {
  table.Row({"Process", "Number", "Memory (PSS) of one"});
  table.Row({"---", "---:", "---:"});
  for (const auto& [kind, use] : result.uses) {
    if (use.processes == 0) continue;
    table.Row({kind, std::to_string(use.processes),
               NumberText(static_cast<double>(use.memoryKiB) / 1024 / use.processes, 1) + " MiB"});
  }
}

/// Halves the interval until a check is late by more than the half of it.
void AddLoads(Report& table, const Fleet& fleet, const Plan& plan) {
  table.Heading("Watching: shares are of one processor");
  AddHead(table);
  const While first = AddLoad(table, fleet, plan, {.watchSeconds = kUsualInterval}, "none: all are asked now");
  for (int interval = kUsualInterval; interval > 0; interval /= 2) {
    const While result =
        AddLoad(table, fleet, plan, {.watchSeconds = interval, .isKnown = true}, "of days: silent ones once an hour");
    if (result.mostLate > std::max(interval / 2, 2)) break;
  }
  table.Heading("Memory, in the first row");
  AddMemory(table, first);
}

void AddAnswers(Report& table, const Fleet& fleet, const Plan& plan) {
  const int events = plan.cameras * kChangesADay;
  table.Heading("Answers, with " + std::to_string(events) + " events a day, while it watches");
  const auto recorder = WatchedRecorder(fleet, {.isKnown = true, .eventsADay = events});
  AddWatchAnswerRows(table, *recorder, plan.cameras);
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv) {
  using namespace bench;
  Plan plan;
  bool hasLoads = true;
  const char about[] =
      "Lets a recorder watch simulated cameras, each at an address of its own, and prints what that costs.";
  const std::vector<rig::ProgramOption> known{{"--cameras", &plan.cameras, "how many", 100, 50'000},
                                              {"--seconds", &plan.seconds, "how long each row is measured"},
                                              {"!--answers", &hasLoads, "only the answers"}};
  if (const auto status = rig::ReadCommandLine("bench_watching", about, known, argc, argv)) return *status;
  plan.silent = plan.cameras * 3 / 100;
  plan.changing = plan.cameras / 100;
  try {
    const Fleet fleet({.cameras = plan.cameras, .silent = plan.silent, .changing = plan.changing});
    rig::Report table;
    if (hasLoads) AddLoads(table, fleet, plan);
    AddAnswers(table, fleet, plan);
  } catch (const std::exception& error) {
    std::cerr << "bench_watching: " << error.what() << '\n';
    return 1;
  }
}
