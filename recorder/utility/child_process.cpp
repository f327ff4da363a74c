#include "recorder/utility/child_process.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <string>
#include <thread>
#include <utility>

#include "recorder/utility/log.h"

namespace recorder {

namespace {

constexpr std::chrono::milliseconds kPause{10};

}  // namespace

ChildProcess::ChildProcess(const std::function<void()>& execute) {
  const pid_t parent = getpid();
  process_ = fork();
  if (process_ < 0) LogFailure(std::string("No process can be started: ") + strerrordesc_np(errno));
  if (process_ > 0) setpgid(process_, process_);  // so does the child: whichever comes first
  if (process_ != 0) return;
  setpgid(0, 0);
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (getppid() != parent) _exit(1);  // it ended before that
  sigset_t none;
  sigemptyset(&none);
  pthread_sigmask(SIG_SETMASK, &none, nullptr);
  execute();
  _exit(127);
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept : process_(std::exchange(other.process_, -1)) {}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
  std::swap(process_, other.process_);
  return *this;
}

ChildProcess::~ChildProcess() {
  // Again and again: a program that is starting anew in its process loses a signal.
  for (; !HasEnded(); std::this_thread::sleep_for(kPause)) Terminate();
}

bool ChildProcess::HasEnded() {
  if (process_ > 0 && waitpid(process_, nullptr, WNOHANG) == process_) {
    Terminate();
    process_ = -1;
  }
  return process_ < 0;
}

void ChildProcess::Terminate() const {
  if (process_ > 0) kill(-process_, SIGTERM);
}

}  // namespace recorder
