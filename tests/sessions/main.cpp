// long_sessions: sessions of the RTSP client with made-up cameras, by the million.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <atomic>
#include <cstdint>
#include <iostream>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "tests/sessions/session_run.h"

namespace sessions {
namespace {

struct Options {
  std::uint64_t runs = 1'000'000;
  std::uint64_t seed = 1;
  bool tells = false;
};

/// Shares the seeds among threads, and tells what came out.
class Trials {
 public:
  explicit Trials(const Options& options) : options_(options) {}

  int Go() {
    std::vector<std::thread> threads(std::max(1U, std::thread::hardware_concurrency()));
    for (std::thread& thread : threads) thread = std::thread([this] { Work(); });
    for (std::thread& thread : threads) thread.join();
    for (const auto& [outcome, count] : outcomes_) std::cout << count << " x " << outcome << "\n";
    std::cout << options_.runs << " sessions, the largest of " << mostHeld_ << " bytes, " << broken_ << " broken\n";
    return broken_ == 0 ? 0 : 1;
  }

 private:
  void Work() {
    for (std::uint64_t run = 0; (run = next_++) < options_.runs;) {
      const std::uint64_t seed = options_.seed + run;
      const Run result = RunSession(Chance(seed), options_.tells);
      const bool isBroken = !result.mistake.empty();
      const bool tells = options_.tells || (isBroken && broken_ < kMostTold);
      Note(run, seed, result, tells ? RunSession(Chance(seed), true).story : "");
    }
  }

  void Note(std::uint64_t run, std::uint64_t seed, const Run& result, const std::string& story) {
    constexpr std::uint64_t kProgress = 100'000;
    const std::scoped_lock lock(mutex_);
    ++outcomes_[result.outcome];
    mostHeld_ = std::max(mostHeld_, result.mostHeld);
    broken_ += result.mistake.empty() ? 0 : 1;
    if (!result.mistake.empty() || options_.tells)
      std::cout << "seed " << seed << " " << result.mistake << "\n" << story;
    if (run % kProgress == 0) std::cout << "session " << run << std::endl;
  }

  static constexpr int kMostTold = 10;
  const Options options_;
  std::atomic<std::uint64_t> next_ = 0;
  std::atomic<int> broken_ = 0;
  std::mutex mutex_;
  std::map<std::string, std::uint64_t> outcomes_;
  std::size_t mostHeld_ = 0;
};

}  // namespace
}  // namespace sessions

int main(int argc, char** argv) {
  sessions::Options options;
  CLI::App app("Sessions of the RTSP client with made-up cameras, networks and clocks, each by its seed.",
               "long_sessions");
  app.add_option("--runs", options.runs)->capture_default_str();
  app.add_option("--seed", options.seed, "of the first; the next one has the next")->capture_default_str();
  app.add_flag("--tell", options.tells, "the story of each, not only of those that broke a promise");
  CLI11_PARSE(app, argc, argv);
  return sessions::Trials(options).Go();
}
