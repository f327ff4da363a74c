// long_guessing: 200 connections that guess a user's password, and somebody with a session meanwhile.

#include <atomic>
#include <chrono>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "rig/callers.h"
#include "rig/command_line.h"
#include "rig/recorder.h"
#include "rig/report.h"

namespace long_tests {

using namespace rig;

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kConnections = 200;
constexpr int kMostGuesses = 30;
constexpr double kMostSlowdown = 2;
constexpr std::chrono::seconds kAlone{5};
constexpr char kSession[] = "/recorder/1/session";

std::string LoginRequest(const std::string& password) {
  Json::Value params;
  params["user"] = "tester";
  params["password"] = password;
  return HttpRequest("POST", kSession, {}, ToText(params));
}

/// Guesses one password after another until it is told to stop, over a new connection where one was ended.
void Guess(int port, int number, const std::atomic<bool>& isStopped, std::map<int, long>& statuses) {
  HttpClient client(port);
  for (int guess = 0; !isStopped; ++guess) {
    try {
      ++statuses[client.Ask(LoginRequest(std::to_string(number) + ' ' + std::to_string(guess))).status];
    } catch (const NoAnswer&) {
      ++statuses[0];
    }
  }
}

/// Many who guess, until the object ends.
class Guessers {
 public:
  explicit Guessers(int port) : statuses_(kConnections) {
    for (int i = 0; i < kConnections; ++i) {
      threads_.emplace_back([this, port, i] { Guess(port, i, isStopped_, statuses_[static_cast<std::size_t>(i)]); });
    }
  }

  /// How many answers of each status came; 0 for none.
  std::map<int, long> Stop() {
    isStopped_ = true;
    threads_.clear();
    std::map<int, long> sum;
    for (const auto& statuses : statuses_) {
      for (const auto& [status, count] : statuses) sum[status] += count;
    }
    return sum;
  }

 private:
  std::vector<std::map<int, long>> statuses_;
  std::atomic<bool> isStopped_ = false;
  std::vector<std::jthread> threads_;
};

/// Milliseconds that a request with a session takes, the median over that time.
double TimeWithSession(const TestRecorder& recorder, const std::string& cookie, std::chrono::seconds time) {
  HttpClient client(recorder.Port());
  const std::string request = HttpRequest("GET", std::string(kApi) + "CamCap?vendor=User", {{"Cookie", cookie}});
  std::vector<double> milliseconds;
  for (const auto end = Clock::now() + time; Clock::now() < end;) {
    const auto start = Clock::now();
    if (client.Ask(request).status != 200) throw std::runtime_error("the session is not let in");
    milliseconds.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return Median(std::move(milliseconds));
}

long CountOf(const std::string& text, const std::string& part) {
  long count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

int Run(std::chrono::seconds time) {
  const TestRecorder recorder({.hashMemoryMiB = 64, .hashPasses = 2});
  const Reply login = HttpClient(recorder.Port()).Ask(LoginRequest("login of the tester"));
  const std::string cookie = HeaderOf(login.head, "Set-Cookie");
  const std::string session = cookie.substr(0, cookie.find(';'));

  Report report;
  report.Heading("Guessing: " + std::to_string(kConnections) + " connections for " + std::to_string(time.count()) +
                 " s");
  const double alone = TimeWithSession(recorder, session, kAlone);
  Guessers guessers(recorder.Port());
  const double meanwhile = TimeWithSession(recorder, session, time);
  for (const auto& [status, count] : guessers.Stop()) {
    report.Note(std::to_string(count) + " answers of status " + std::to_string(status));
  }
  const long tried = CountOf(recorder.Log(), "Login of \"tester\" from 127.0.0.1 failed.");
  report.Promise(tried > 0 && tried <= kMostGuesses, std::to_string(tried) + " passwords of the user were looked at");
  report.Promise(meanwhile <= kMostSlowdown * alone, "a request with a session took " + NumberText(meanwhile, 2) +
                                                         " ms, alone " + NumberText(alone, 2) + " ms");
  return report.ExitStatus();
}

}  // namespace

}  // namespace long_tests

int main(int argc, char** argv) {
  int seconds = 60;
  const char about[] =
      "Guesses a user's password over 200 connections, and measures somebody with a session meanwhile.";
  const rig::ProgramOption known{"--seconds", &seconds, "how long to guess"};
  if (const auto status = rig::ReadCommandLine("long_guessing", about, {known}, argc, argv)) return *status;
  return long_tests::Run(std::chrono::seconds(seconds));
}
