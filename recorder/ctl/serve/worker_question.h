#pragma once

#include <cstdint>
#include <filesystem>
#include <stop_token>
#include <string>
#include <utility>

#include "recorder/utility/counts.h"

namespace recorder {

/// Asks a process of the pool that listens at `socket` whether it is alive, over FastCGI 1.0 and past the web server,
/// whose connections strangers may hold: for 5 s at most until it is taken, and again for its answer. "" when it is,
/// else what came instead, which is nothing as soon as `stop` says so. Any thread.
std::string WhyNoWorkerAnswers(const std::filesystem::path& socket, const std::stop_token& stop);

/// Whether a pool is alive. Who asks it stands behind all callers, however many these are: so it is not asked as long
/// as it answers them. One thread.
class PoolPulse {
 public:
  PoolPulse(std::filesystem::path socket, const PoolCount& pool) : socket_(std::move(socket)), pool_(pool) {}

  /// "" where the pool has answered somebody since the last call, or does so now; else as WhyNoWorkerAnswers().
  std::string WhyNone(const std::stop_token& stop);

 private:
  bool HasAnswered();

  std::filesystem::path socket_;
  const PoolCount& pool_;
  std::uint64_t answered_ = 0;
};

}  // namespace recorder
