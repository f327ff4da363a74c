#pragma once

#include <filesystem>
#include <string>

namespace recorder {

/// Asks a process of the pool that listens at `socket` whether it is alive, over FastCGI 1.0 and past the web server,
/// whose connections strangers may hold: for 5 s at most until it is taken, and again for its answer. "" when it is,
/// else what came instead. Any thread.
std::string WhyNoWorkerAnswers(const std::filesystem::path& socket);

}  // namespace recorder
