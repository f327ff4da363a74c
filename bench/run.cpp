// bench_run: the recorder's answers beside the same answers by other means, in one table.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "bench/rows.h"
#include "rig/recorder.h"

namespace bench {

using namespace rig;

namespace {

struct Subject {
  const char* name;
  void (*addRows)(Report&);
};

constexpr Subject kSubjects[] = {
    {"pictures", AddPictureRows}, {"far", AddFarRow},       {"batch", AddBatchRow},    {"module", AddModuleRows},
    {"callers", AddCallerRows},   {"memory", AddMemoryRow}, {"growth", AddGrowthRows},
};

std::string Processor() {
  std::ifstream lines("/proc/cpuinfo");
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("model name")) return line.substr(line.find(": ") + 2);
  }
  return "unknown processor";
}

std::string Title(const std::string& revision) {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  char date[32];
  std::strftime(date, sizeof(date), "%Y-%m-%d", localtime_r(&now, &parts));
  double load = 0;
  getloadavg(&load, 1);
  return "# Side by side\n\n`bench/run` of " + std::string(date) + ", revision " + revision + ", on " +
         std::to_string(std::thread::hardware_concurrency()) + " processors (" + Processor() + "), load before it " +
         NumberText(load) +
         ".\nEvery answer is checked. Ours and the other take turns: medians of 9 pairs (the batch 3), and the median\n"
         "of the pairs' ratios. Growth: medians of 5, and the worst step from a size to the next. Memory: one run.\n";
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv) {
  std::vector<std::string> chosen;
  CLI::App app("Times the recorder beside other means to the same answers, all on 127.0.0.1, and prints a table.",
               "bench_run");
  std::string output;
  std::vector<std::string> names;
  for (const auto& subject : bench::kSubjects) names.emplace_back(subject.name);
  app.add_option("subjects", chosen, "what to time (default: all)")->check(CLI::IsMember(names));
  app.add_option("--output", output, "file for the table");
  std::string revision = "unknown";
  app.add_option("--revision", revision, "what is timed, for the title");
  CLI11_PARSE(app, argc, argv);
  if (!output.empty()) output = std::filesystem::absolute(output).string();
  rig::Report table;
  table.Heading(bench::Title(revision));
  bench::AddHead(table);
  bool isWrong = false;
  for (const auto& [name, addRows] : bench::kSubjects) {
    if (!chosen.empty() && std::find(chosen.begin(), chosen.end(), name) == chosen.end()) continue;
    try {
      addRows(table);
    } catch (const std::exception& error) {
      table.Row({name, "WRONG ANSWER", "", error.what(), "", "", "", ""});
      isWrong = true;
    }
  }
  if (!output.empty()) std::ofstream(output) << table.Text();
  return isWrong ? 1 : 0;
}
