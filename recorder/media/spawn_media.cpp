#include "recorder/media/spawn_media.h"

#include <spawn.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <utility>

#include "recorder/utility/log.h"

namespace recorder {
namespace {

/// Bytes: a picture should go over at once, without a pause for its reader. The system may grant less.
constexpr int kSendBuffer = 1 << 20;

/// Does `posix_spawn` with descriptors and signals as a media process has them.
class Spawning {
 public:
  explicit Spawning(int end) {
    posix_spawn_file_actions_init(&actions_);
    posix_spawn_file_actions_adddup2(&actions_, end, STDIN_FILENO);
    posix_spawn_file_actions_addclose(&actions_, STDOUT_FILENO);
    posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
    posix_spawnattr_init(&attributes_);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes_, &none);
    posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK);
  }
  ~Spawning() {
    posix_spawn_file_actions_destroy(&actions_);
    posix_spawnattr_destroy(&attributes_);
  }
  Spawning(const Spawning&) = delete;
  Spawning& operator=(const Spawning&) = delete;

  /// An error number; 0: `process` runs.
  int Run(std::string program, pid_t& process) const {
    char* const arguments[] = {program.data(), nullptr};
    char* const environment[] = {nullptr};
    return posix_spawn(&process, program.c_str(), &actions_, &attributes_, arguments, environment);
  }

 private:
  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
};

std::string FindProgram() {
  const char* named = std::getenv("RECORDER_MEDIA");  // NOLINT(concurrency-mt-unsafe): nobody sets variables
  if (named != nullptr) return named;
  return std::filesystem::read_symlink("/proc/self/exe").parent_path() / "recorder-media";
}

}  // namespace

MediaChild SpawnMedia() {
  const std::string program = FindProgram();
  int ends[2] = {-1, -1};
  int error = socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0 ? 0 : errno;
  for (const int end : ends) setsockopt(end, SOL_SOCKET, SO_SNDBUF, &kSendBuffer, sizeof(kSendBuffer));
  FileDescriptor ours(ends[0]);
  const FileDescriptor childs(ends[1]);
  pid_t process = -1;
  if (error == 0) error = Spawning(childs.Get()).Run(program, process);
  if (error == 0) return {process, std::move(ours)};
  LogFailure(program + " cannot be started: " + std::string(strerrordesc_np(error)));
  return {};
}

}  // namespace recorder
