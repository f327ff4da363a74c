#include "recorder/ctl/serve/worker_pool.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <system_error>
#include <utility>

#include "recorder/utility/limits.h"
#include "recorder/utility/log.h"

namespace recorder {

namespace {

/// A worker that cannot start is not tried without a pause.
constexpr std::chrono::seconds kShortestLife{1};

FileDescriptor Listen(const std::filesystem::path& file) {
  FileDescriptor listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  const std::string name = file.string();
  if (name.size() >= sizeof(address.sun_path)) throw std::system_error(ENAMETOOLONG, std::generic_category(), name);
  std::memcpy(address.sun_path, name.c_str(), name.size() + 1);
  if (bind(listener.Get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 ||
      listen(listener.Get(), kLongestQueue) != 0) {
    throw std::system_error(errno, std::generic_category(), name);
  }
  return listener;
}

}  // namespace

WorkerPool::WorkerPool(const std::filesystem::path& socketFile, std::filesystem::path program, int count,
                       PoolCount& entries, Program counted)
    : program_(std::move(program)),
      counted_(counted),
      socket_(Listen(socketFile)),
      workers_(static_cast<std::size_t>(count)) {
  WorkerCount* entry = entries.data();
  for (Worker& worker : workers_) {
    worker.entry = entry++;
    Start(worker);
  }
}

WorkerPool::~WorkerPool() {
  for (const Worker& worker : workers_) worker.process.Terminate();  // all at once, before each is waited for
}

void WorkerPool::Replenish() {
  for (Worker& worker : workers_) {
    const pid_t process = worker.process.Id();
    const bool hasEnded = worker.process.HasEnded();
    if (hasEnded && process > 0) {
      LogFailure("The worker " + std::to_string(process) + " has ended; another one takes its place.");
      Forget(worker);
    }
    if (hasEnded && Clock::now() - worker.start >= kShortestLife) Start(worker);
  }
}

void WorkerPool::Forget(const Worker& worker) const {
  worker.entry->process = 0;
  worker.entry->isBusy = false;
  worker.entry->user = 0;
  SharedCounts().AddEnd(counted_);
}

/// The process enters itself: it looks for its entry at once.
void WorkerPool::Start(Worker& worker) {
  worker.start = Clock::now();
  worker.process = ChildProcess([this, entry = worker.entry] {
    entry->process = getpid();
    dup2(socket_.Get(), STDIN_FILENO);
    execl(program_.c_str(), program_.c_str(), nullptr);
  });
}

}  // namespace recorder
