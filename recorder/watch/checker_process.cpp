#include "recorder/watch/checker_process.h"

#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <optional>
#include <string>
#include <string_view>

#include "recorder/utility/log.h"
#include "recorder/utility/secrets.h"
#include "recorder/watch/job_messages.h"

namespace recorder {
namespace {

/// Where the socket is then, as the number of a standard descriptor is never given to anything else.
constexpr int kJobs = STDIN_FILENO;

void KeepOnly(int jobs) {
  dup2(jobs, kJobs);
  close_range(STDERR_FILENO + 1, ~0U, 0);
}

std::optional<std::string> Receive() {
  std::array<char, 16384> buffer{};
  std::string received;
  while (true) {
    if (auto message = TakeMessage(received)) return message;
    const ssize_t size = read(kJobs, buffer.data(), buffer.size());
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) return std::nullopt;
    received.append(buffer.data(), static_cast<std::size_t>(size));
  }
}

bool Send(std::string_view message) {
  while (!message.empty()) {
    const ssize_t size = send(kJobs, message.data(), message.size(), MSG_NOSIGNAL);
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) return false;
    message.remove_prefix(static_cast<std::size_t>(size));
  }
  return true;
}

CheckAnswer Answered(const CheckJob& job, const CheckWork& work) {
  const auto start = Clock::now();
  CheckAnswer answer;
  try {
    answer = work(job);
  } catch (const std::exception& error) {
    LogFailure(error.what());
  }
  answer.time = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
  return answer;
}

}  // namespace

void ServeJobs(int jobs, const CheckWork& work) {
  constexpr int kBehindOthers = 10;
  setpriority(PRIO_PROCESS, 0, kBehindOthers);
  KeepOnly(jobs);
  bool isHeard = true;
  while (isHeard) {
    std::optional<std::string> message = Receive();
    if (!message) break;
    const WipeAtEnd wipe(*message);
    isHeard = Send(ToMessage(Answered(ReadJob(*message), work)));
  }
  _exit(0);
}

}  // namespace recorder
