#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "recorder/http/fastcgi.h"
#include "recorder/utility/clock.h"

namespace recorder {

/// A request over FastCGI, which must be finished before it ends.
using FastCgiRequest = std::unique_ptr<FCGX_Request>;

/// Sends answers a second later and keeps no thread busy with that: whoever asks again and again, as one does who
/// guesses, gets one answer a second over each connection, and takes little time from others. Any thread.
class LateAnswers {
 public:
  void Add(FastCgiRequest request, std::string answer);

 private:
  struct Late {
    FastCgiRequest request;
    std::string answer;
    Clock::time_point due;
  };
  void SendAll(const std::stop_token& stop);

  std::mutex mutex_;
  std::condition_variable_any isThere_;
  std::deque<Late> late_;  // the first is due first
  std::jthread sender_{[this](const std::stop_token& stop) { SendAll(stop); }};
};

}  // namespace recorder
