#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "rig/http_client.h"

namespace rig {

/// A request, and how its own answer is told from all others.
struct Question {
  std::string method;
  std::string request;                               ///< see HttpRequest()
  std::function<std::string(const Reply&)> mistake;  ///< what is wrong with an answer of status 200; "" for nothing
};

/// What became of the requests.
struct Tally {
  long answered = 0;                                        ///< with what belongs to the question
  long wrong = 0;                                           ///< with something else
  long failed = 0;                                          ///< with status 5xx, in words for the caller
  long unanswered = 0;                                      ///< not at all, or not to the end
  long stray = 0;                                           ///< answers that nobody asked for
  std::map<std::string, std::vector<double>> milliseconds;  ///< of what was answered, by method
  std::vector<std::string> troubles;                        ///< the first of them, for the reader

  long Asked() const { return answered + wrong + failed + unanswered; }
  /// "" when there was none.
  std::string FirstTrouble() const { return troubles.empty() ? "" : troubles.front(); }
  void Add(const Tally& other);
};

/// Of no values: 0.
double Median(std::vector<double> values);

/// Callers that ask side by side, each one question after another, over a connection of its own.
/// Thread: each caller's source of questions is called by its own thread alone.
class Callers {
 public:
  using Source = std::function<Question()>;

  /// They end by themselves once `enough` requests were asked; 0: only when they are stopped.
  Callers(int port, std::vector<Source> sources, long enough = 0);
  ~Callers() { Stop(); }
  Callers(const Callers&) = delete;
  Callers& operator=(const Callers&) = delete;

  /// Waits until they end by themselves.
  Tally Wait();
  /// Lets each end the request at hand.
  Tally Stop();

 private:
  void AskOn(int port, const Source& source);

  const long enough_;
  std::atomic<long> begun_ = 0;
  std::atomic<bool> isStopped_ = false;
  std::mutex mutex_;  // of tally_
  Tally tally_;
  std::vector<std::thread> threads_;
};

}  // namespace rig
