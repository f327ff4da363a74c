#include "recorder/webapi/ctl/worker_pool.h"

#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <string>
#include <system_error>
#include <utility>

#include "recorder/utility/log.h"

namespace recorder {

namespace {

using Clock = std::chrono::steady_clock;

/// A worker that cannot start is not tried without a pause.
constexpr std::chrono::seconds kShortestLife{1};
constexpr int kLongestQueue = 1024;

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

[[noreturn]] void Execute(const std::filesystem::path& program, int socket, pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (getppid() != parent) _exit(1);  // it ended before that
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  dup2(socket, STDIN_FILENO);
  execl(program.c_str(), program.c_str(), nullptr);
  _exit(127);
}

}  // namespace

WorkerPool::WorkerPool(const std::filesystem::path& socketFile, std::filesystem::path program, int count)
    : program_(std::move(program)), socket_(Listen(socketFile)), workers_(static_cast<std::size_t>(count)) {
  for (Worker& worker : workers_) Start(worker);
}

WorkerPool::~WorkerPool() {
  for (const Worker& worker : workers_) {
    if (worker.process > 0) kill(worker.process, SIGTERM);
  }
  for (const Worker& worker : workers_) {
    if (worker.process > 0) waitpid(worker.process, nullptr, 0);
  }
}

void WorkerPool::Replenish() {
  for (Worker& worker : workers_) {
    if (worker.process > 0 && waitpid(worker.process, nullptr, WNOHANG) == worker.process) {
      LogFailure("The worker " + std::to_string(worker.process) + " has ended; another one takes its place.");
      worker.process = -1;
    }
    if (worker.process < 0 && Clock::now() - worker.start >= kShortestLife) Start(worker);
  }
}

void WorkerPool::Start(Worker& worker) {
  const pid_t parent = getpid();
  worker.start = Clock::now();
  worker.process = fork();
  if (worker.process == 0) Execute(program_, socket_.Get(), parent);
}

}  // namespace recorder
