#include "tests/long/victims.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <thread>

#include "recorder/utility/clock.h"

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

}  // namespace

std::vector<ProcessInfo> ServerProcesses() { return Find(Victim::kServerTree); }

bool Strike(Victim victim, std::mt19937& random) {
  constexpr milliseconds kPatience{200};  // one "recorderctl camera" follows another
  std::vector<ProcessInfo> found;
  for (const auto end = Clock::now() + kPatience; found.empty() && Clock::now() < end;) {
    found = Find(victim);
    if (found.empty()) std::this_thread::sleep_for(kLookAgain);
  }
  std::shuffle(found.begin(), found.end(), random);
  if (victim != Victim::kServerTree && found.size() > 1) found.resize(1);
  return std::count_if(found.begin(), found.end(), [](const ProcessInfo& process) { return Kill(process); }) > 0;
}

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

}  // namespace long_tests
