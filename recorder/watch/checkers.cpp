#include "recorder/watch/checkers.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <exception>
#include <optional>
#include <string_view>
#include <utility>

#include "recorder/utility/child_process.h"
#include "recorder/utility/counts.h"
#include "recorder/utility/handle.h"
#include "recorder/utility/log.h"
#include "recorder/utility/secrets.h"
#include "recorder/watch/checker_process.h"
#include "recorder/watch/job_messages.h"

namespace recorder {

/// One process, and this end of its socket.
class Checkers::Checker {
 public:
  explicit Checker(const CheckWork& work) {
    int ends[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
      LogFailure(std::string("No socket can be had for a process: ") + strerrordesc_np(errno));
      return;
    }
    socket_ = FileDescriptor(ends[0]);
    const FileDescriptor theirs(ends[1]);
    process_ = ChildProcess([&] { ServeJobs(theirs.Get(), work); });
  }

  int Socket() const { return socket_.Get(); }
  bool IsBusy() const { return job_.has_value(); }
  Clock::time_point Since() const { return since_; }
  void Terminate() const { process_.Terminate(); }

  /// False: the process is gone, or takes nothing.
  bool Give(const CheckJob& job) {
    if (process_.Id() < 0) return false;
    std::string message = ToMessage(job);
    const WipeAtEnd wipe(message);
    if (!Send(message)) return false;
    job_ = job.id;
    since_ = Clock::now();
    return true;
  }

  /// What has come of the job, if anything has.
  std::optional<CheckAnswer> Take(std::chrono::milliseconds longest) {
    isGone_ = !Receive();
    if (!job_) return std::nullopt;
    if (auto message = TakeMessage(received_)) return Ended(ReadAnswer(*message));
    if (!isGone_ && Clock::now() < since_ + longest) return std::nullopt;
    LogFailure("The process " + std::to_string(process_.Id()) + " that asked a camera " +
               (isGone_ ? "has ended." : "took too long; it is ended."));
    isGone_ = true;
    SharedCounts().AddEnd(Program::kWatch);
    return Ended({.kind = CheckAnswer::Kind::kDied,
                  .time = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - since_)});
  }

  /// Whether it is of no more use: it has ended, took too long, or had nothing to do for `longest`.
  bool IsSpent(std::chrono::seconds longest) const {
    return isGone_ || (!IsBusy() && Clock::now() >= since_ + longest);
  }

 private:
  /// A process that is about to take a job has room for one: it has nothing else to read.
  bool Send(std::string_view message) {
    constexpr int kPatience = 1000;  // milliseconds, for a large one
    while (!message.empty()) {
      const ssize_t size = send(socket_.Get(), message.data(), message.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
      if (size > 0) message.remove_prefix(static_cast<std::size_t>(size));
      if (size >= 0 || errno == EINTR) continue;
      pollfd room{.fd = socket_.Get(), .events = POLLOUT, .revents = 0};
      if (errno != EAGAIN || poll(&room, 1, kPatience) <= 0) return false;
    }
    return true;
  }

  /// Takes what has come. False: the other end is closed.
  bool Receive() {
    std::array<char, 16384> buffer{};
    ssize_t size = 0;
    while ((size = recv(socket_.Get(), buffer.data(), buffer.size(), MSG_DONTWAIT)) > 0) {
      received_.append(buffer.data(), static_cast<std::size_t>(size));
    }
    return size < 0 && errno == EAGAIN;
  }

  CheckAnswer Ended(CheckAnswer answer) {
    answer.id = *std::exchange(job_, std::nullopt);
    since_ = Clock::now();
    return answer;
  }

  FileDescriptor socket_;
  ChildProcess process_;
  std::optional<std::uint64_t> job_;
  Clock::time_point since_ = Clock::now();  // it has its job, or none
  std::string received_;
  bool isGone_ = false;
};

Checkers::Checkers(CheckWork work, CheckerLimits limits) : work_(std::move(work)), limits_(limits) {}

Checkers::~Checkers() {
  for (const Checker& checker : checkers_) checker.Terminate();  // all at once, before each is waited for
}

std::size_t Checkers::Free() const {
  const auto busy = std::count_if(checkers_.begin(), checkers_.end(), [](const auto& one) { return one.IsBusy(); });
  return limits_.most - static_cast<std::size_t>(busy);
}

/// An idle process may have died meanwhile; then the next one is tried, and at last a new one.
bool Checkers::Start(const CheckJob& job) {
  for (auto idle = checkers_.begin(); idle != checkers_.end();) {
    if (!idle->IsBusy() && idle->Give(job)) return true;
    idle = idle->IsBusy() ? std::next(idle) : checkers_.erase(idle);
  }
  checkers_.emplace_front(work_);
  if (checkers_.front().Give(job)) return true;
  checkers_.pop_front();
  return false;
}

void Checkers::AddTo(std::vector<pollfd>& waited) const {
  for (const Checker& checker : checkers_) waited.push_back({.fd = checker.Socket(), .events = POLLIN, .revents = 0});
}

Clock::time_point Checkers::TakeAt() const {
  Clock::time_point at = Clock::time_point::max();
  for (const Checker& checker : checkers_) {
    at = std::min(at, checker.Since() + (checker.IsBusy() ? limits_.job : limits_.idle));
  }
  return at;
}

std::vector<CheckAnswer> Checkers::Take() {
  std::vector<CheckAnswer> answers;
  for (Checker& checker : checkers_) {
    if (auto answer = checker.Take(limits_.job)) answers.push_back(std::move(*answer));
  }
  RemoveSpent();
  return answers;
}

void Checkers::RemoveSpent() {
  std::list<Checker> spent;
  for (auto next = checkers_.begin(); next != checkers_.end();) {
    const auto checker = next++;
    if (checker->IsSpent(limits_.idle)) spent.splice(spent.end(), checkers_, checker);
  }
  for (const Checker& checker : spent) checker.Terminate();  // all at once, before each is waited for
}

}  // namespace recorder
