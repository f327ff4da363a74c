#include "bench/watching_answers.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "bench/comparison.h"
#include "recorder/utility/clock.h"
#include "rig/callers.h"

namespace bench {

using namespace rig;

namespace {

constexpr int kTimes = 5;
constexpr std::int64_t kWeek = 604'800;  // in seconds
constexpr int kMostPages = 20;           // of events, that the page reads at once

/// What is asked gives the size of what came.
using Question = std::function<std::size_t()>;

void AddRow(Report& table, const std::string& name, const Question& ask) {
  std::vector<double> times;
  times.reserve(kTimes);
  std::size_t size = 0;
  for (int i = 0; i < kTimes; ++i) times.push_back(TimeOf([&] { size = ask(); }));
  const auto [least, most] = std::ranges::minmax(times);
  table.Row({name, TimeText(Median(times)), TimeText(least) + " to " + TimeText(most),
             NumberText(static_cast<double>(size) / 1024, 0) + " KiB"});
}

Reply Get(const TestRecorder& recorder, const std::string& path, int status = 200, Headers more = {}) {
  more.merge(recorder.Login());
  Reply reply = recorder.Ask("GET", path, more);
  if (reply.status != status) throw WrongAnswer(path + ": status " + std::to_string(reply.status));
  return reply;
}

std::string Week() { return "/recorder/1/events?limit=1000&since=" + std::to_string(recorder::SecondsNow() - kWeek); }

/// The events of a week as the page reads them: until it has all, or no more pages.
std::size_t ReadWeek(const TestRecorder& recorder) {
  std::size_t size = 0;
  std::string next;
  for (int page = 0; page < kMostPages; ++page) {
    const Reply reply = Get(recorder, Week() + next);
    size += reply.body.size();
    const Json::Value after = ParseJson(reply.body)["data"]["next"];
    if (after.isNull()) break;
    next = "&after=" + after.asString();
  }
  return size;
}

std::size_t LoadPage(const TestRecorder& recorder) {
  std::size_t size = 0;
  for (const std::string path : {"/recorder/1/session", "/recorder/1/models", "/recorder/1/cameras"}) {
    size += Get(recorder, path).body.size();
  }
  return size + ReadWeek(recorder);
}

std::size_t TellStatus(const TestRecorder& recorder, int cameras) {
  const Finished status = recorder.Control({"status", "--json"});
  if (ParseJson(status.output)["cameras"].size() != static_cast<unsigned>(cameras)) throw WrongAnswer(status.output);
  return status.output.size();
}

}  // namespace

void AddWatchAnswerRows(Report& table, const TestRecorder& recorder, int cameras) {
  const auto row = [&](const std::string& name, const std::string& path) {
    AddRow(table, name, [&] { return Get(recorder, path).body.size(); });
  };
  table.Row({"Answer", "Median", "Least to most", "Size"});
  table.Row({"---", "---:", "---:", "---:"});
  row("all cameras", "/recorder/1/cameras");
  const std::string tag = HeaderOf(Get(recorder, "/recorder/1/cameras").head, "ETag");
  AddRow(table, "all cameras, with the tag of just now", [&] {
    return recorder.Ask("GET", "/recorder/1/cameras", Headers{{"If-None-Match", tag}, *recorder.Login().begin()})
        .body.size();
  });
  row("one camera", "/recorder/1/cameras/" + std::to_string(cameras / 2));
  row("`/metrics`", "/metrics");
  row("events, the newest 100", "/recorder/1/events");
  row("events, the newest 1,000", "/recorder/1/events?limit=1000");
  row("events, 1,000 of a month ago", "/recorder/1/events?limit=1000&after=1000000");
  row("events of one camera, 100", "/recorder/1/events?camera=" + std::to_string(cameras / 2));
  row("events of one cause, 100", "/recorder/1/events?cause=timedOut");
  row("events of a cause that never was", "/recorder/1/events?cause=busy");
  row("events since a week ago, the newest 1,000", Week());
  AddRow(table, "a load of the page: session, models, cameras, 20 pages of events", [&] { return LoadPage(recorder); });
  AddRow(table, "`recorderctl status --json`", [&] { return TellStatus(recorder, cameras); });
  const auto records = std::filesystem::file_size(recorder.StateFolder() / "recorder.db");
  table.Note("recorder.db: " + NumberText(static_cast<double>(records) / 1024 / 1024) + " MiB");
}

}  // namespace bench
