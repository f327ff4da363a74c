// long_sessions: sessions of the RTSP client with made-up cameras, by the million.

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <iostream>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "rig/command_line.h"
#include "tests/sessions/session_run.h"

namespace sessions {
namespace {

/// What came out of all sessions.
struct Tally {
  std::mutex mutex;
  std::map<std::string, std::uint64_t> outcomes;
  int broken = 0;
};

void Note(Tally& tally, std::uint64_t seed, const Run& run, bool isOnlyOne) {
  constexpr int kMostTold = 10;
  const std::scoped_lock lock(tally.mutex);
  ++tally.outcomes[run.outcome];
  const bool isBroken = !run.mistake.empty();
  if (isBroken) std::cout << "seed " << seed << " " << run.mistake << std::endl;
  if (isOnlyOne || (isBroken && tally.broken < kMostTold)) std::cout << RunSession(Chance(seed), true).story;
  tally.broken += isBroken ? 1 : 0;
}

/// Shares the seeds among threads.
int RunAll(std::uint64_t seed, std::uint64_t runs) {
  Tally tally;
  std::atomic<std::uint64_t> next = 0;
  const auto work = [&] {
    for (std::uint64_t at = 0; (at = seed + next++) < seed + runs;)
      Note(tally, at, RunSession(Chance(at), false), runs == 1);
  };
  std::vector<std::jthread> threads(std::max(1U, std::thread::hardware_concurrency()));
  for (std::jthread& thread : threads) thread = std::jthread(work);
  threads.clear();  // which waits for them
  for (const auto& [outcome, count] : tally.outcomes) std::cout << count << " x " << outcome << "\n";
  std::cout << runs << " sessions, " << tally.broken << " broken\n";
  return tally.broken == 0 ? 0 : 1;
}

}  // namespace
}  // namespace sessions

int main(int argc, char** argv) {
  std::uint64_t runs = 1'000'000;
  std::uint64_t seed = 1;
  const char about[] = "Sessions of the RTSP client with made-up cameras, networks and clocks, each by its seed.";
  const std::vector<rig::ProgramOption> known{{"--runs", &runs, "a single one is told"},
                                              {"--seed", &seed, "of the first; the next one has the next"}};
  if (const auto status = rig::ReadCommandLine("long_sessions", about, known, argc, argv)) return *status;
  return sessions::RunAll(seed, runs);
}
