// bench_long_list: the time of a run of thousands of rows, beside that of a sliding window over the same rows.

#include <algorithm>
#include <chrono>
#include <functional>
#include <iostream>
#include <queue>
#include <string>
#include <thread>
#include <vector>

#include "bench/comparison.h"
#include "bench/fleet.h"
#include "rig/command_line.h"
#include "rig/recorder.h"
#include "rig/report.h"

namespace bench {

using namespace rig;

namespace {

using Milliseconds = std::chrono::milliseconds;

constexpr int kTestMs = 10'000;      // as it is by default
constexpr std::size_t kWidth = 200;  // rows that are tested at once
constexpr int kRowsAtOnce = 1000;
constexpr Milliseconds kLookAgain{200};
constexpr double kGoal = 1.25;

Json::Value Ask(const TestRecorder& recorder, const std::string& verb, const std::string& path,
                const Json::Value& body = Json::Value()) {
  const std::string text = body.isNull() ? "" : ToText(body);
  const Reply reply = recorder.Ask(verb, "/recorder/1/runs" + path, recorder.Login(), text);
  if (reply.status / 100 != 2) throw WrongAnswer(path + ": " + reply.body);
  return ParseJson(reply.body)["data"];
}

Json::Value RowOf(const Fleet& fleet, int camera) {
  Json::Value row;
  row["vendor"] = "Simcam";
  row["model"] = "RTSP-H264";
  row["host"] = fleet.HostOf(camera);
  row["port"] = Fleet::kPort;
  row["user"] = Fleet::kUser;
  row["password"] = Fleet::kPassword;
  return row;
}

/// Its address below that of all runs.
std::string OpenRun(const TestRecorder& recorder, const Fleet& fleet) {
  std::string run = "/" + Ask(recorder, "POST", "", Json::objectValue)["id"].asString();
  for (int first = 0; first < fleet.Size(); first += kRowsAtOnce) {
    Json::Value body;
    for (int i = first; i < std::min(first + kRowsAtOnce, fleet.Size()); ++i) body["rows"].append(RowOf(fleet, i));
    Ask(recorder, "POST", run + "/rows", body);
  }
  return run;
}

void CheckResults(const Fleet& fleet, const Json::Value& run) {
  int silent = 0;
  for (int i = 0; i < fleet.Size(); ++i) silent += fleet.IsSilent(i) ? 1 : 0;
  const Json::Value& results = run["results"];
  if (results["timedOut"].asInt() != silent || results["ok"].asInt() != fleet.Size() - silent) {
    throw WrongAnswer("rows came to " + ToText(results));
  }
}

/// Milliseconds, from its start until all rows are done.
double TimeRun(const TestRecorder& recorder, const Fleet& fleet) {
  const std::string path = OpenRun(recorder, fleet);
  Json::Value run;
  const double time = TimeOf([&] {
    Ask(recorder, "POST", path + "/start", Json::objectValue);
    do {
      std::this_thread::sleep_for(kLookAgain);
      run = Ask(recorder, "GET", path);
    } while (run["state"] != "ended");
  });
  CheckResults(fleet, run);
  return time;
}

/// When all rows are done if each begins as soon as one before has ended. A row takes as long as its camera was talked
/// with, and one that is silent the time limit.
double IdealTime(Fleet& fleet) {
  std::priority_queue<Milliseconds, std::vector<Milliseconds>, std::greater<>> ends;
  Milliseconds last{0};
  const std::vector<Milliseconds> longest = fleet.TakeLongest();
  for (int i = 0; i < fleet.Size(); ++i) {
    const Milliseconds begin = ends.size() < kWidth ? Milliseconds(0) : ends.top();
    if (ends.size() == kWidth) ends.pop();
    const Milliseconds end = begin + (fleet.IsSilent(i) ? Milliseconds(kTestMs) : longest[static_cast<std::size_t>(i)]);
    ends.push(end);
    last = std::max(last, end);
  }
  return static_cast<double>(last.count());
}

void AddRow(Report& table, const std::string& name, const TestRecorder& recorder, Fleet& fleet) {
  const Fleet::Seen before = fleet.All();
  const double time = TimeRun(recorder, fleet);
  const Fleet::Seen after = fleet.All();
  const double ideal = IdealTime(fleet);
  if (after.refusedLogins > 0) throw WrongAnswer("a camera saw a wrong login");
  if (after.mostAtOnce > 1) throw WrongAnswer("a camera was contacted by two at once");
  table.Row({name, TimeText(time), TimeText(ideal), NumberText(time / ideal, 2),
             time / ideal <= kGoal ? "met" : "missed", std::to_string(after.tests - before.tests),
             std::to_string(after.knocks - before.knocks)});
}

void Compare(Fleet& fleet) {
  TestRecorder::Options options;
  options.testMs = kTestMs;
  options.allow.emplace_back(Fleet::kSilentRange);
  options.watchSeconds = 300;
  const TestRecorder recorder(options);
  Report table;
  table.Row({"List of " + std::to_string(fleet.Size()), "Run", "Window of 200, computed of its rows", "Ratio",
             "Goal " + NumberText(kGoal, 2), "Contacts", "Knocks"});
  table.Row({"---", "---:", "---:", "---:", "---", "---:", "---:"});
  AddRow(table, "for the first time", recorder, fleet);
  AddRow(table, "again", recorder, fleet);
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv) {
  using namespace bench;
  FleetOptions options{.silent = -1, .changing = 0, .soonest = Milliseconds(7), .latest = Milliseconds(127)};
  const char about[] =
      "Times a run of simulated cameras, each at an address of its own, beside the best that could be.";
  const std::vector<rig::ProgramOption> known{
      {"--rows", &options.cameras, "how many", 100, 50'000},
      {"--silent", &options.silent, "how many of them are silent; -1: 3 %", -1}};
  if (const auto status = rig::ReadCommandLine("bench_long_list", about, known, argc, argv)) return *status;
  if (options.silent < 0) options.silent = options.cameras * 3 / 100;
  try {
    Fleet fleet(options);
    Compare(fleet);
  } catch (const std::exception& error) {
    std::cerr << "bench_long_list: " << error.what() << '\n';
    return 1;
  }
}
