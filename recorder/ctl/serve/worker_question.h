#pragma once

#include <filesystem>
#include <stop_token>
#include <string>

namespace recorder {

/// Asks a process of the pool that listens at `socket` whether it is alive, over FastCGI 1.0 and past the web server,
/// whose connections strangers may hold: for 5 s at most until it is taken, and again for its answer. "" when it is,
/// else what came instead, which is nothing as soon as `stop` says so. Any thread.
std::string WhyNoWorkerAnswers(const std::filesystem::path& socket, const std::stop_token& stop);

}  // namespace recorder
