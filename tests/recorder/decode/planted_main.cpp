// A recorder-media as a stranger would have it who has taken its parser over: a body of HTTP that begins with
// "planted:" names what he tries, and its argument. Where he succeeds, the answer is a picture.

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <string>
#include <utility>

#include "recorder/decode/answerer.h"
#include "recorder/decode/rehearsal.h"
#include "recorder/decode/sandbox.h"
#include "recorder/decode/serve.h"
#include "recorder/utility/bytes.h"

namespace {

using namespace recorder;

[[noreturn]] bool AllocateWithoutEnd() {
  constexpr std::size_t kPiece = 4 * kMiB;
  for (;;) std::memset(new char[kPiece], 1, kPiece);
}

bool LoopForEver() {
  const volatile bool isOver = false;
  while (!isOver) {
  }
  return false;
}

/// An answer with more of a picture than there can be.
bool Lie() {
  const MediaAnswerHead head{MediaStatus::kPicture, 0, 0, 0, 0, 0xFFFFFFFF};
  return send(STDIN_FILENO, &head, sizeof(head), 0) < 0;
}

struct Deed {
  std::string_view name;
  bool (*succeeds)(const char* argument);
};

const Deed kDeeds[] = {
    {"read", [](const char* file) { return open(file, O_RDONLY) >= 0; }},
    {"write", [](const char* file) { return open(file, O_WRONLY | O_CREAT, 0600) >= 0; }},
    {"remove", [](const char* file) { return unlink(file) == 0; }},
    {"execute", [](const char* file) { return execl(file, file, nullptr) == 0; }},
    {"fork", [](const char*) { return fork() >= 0; }},
    {"socket", [](const char*) { return socket(AF_INET, SOCK_STREAM, 0) >= 0; }},
    {"connect", [](const char*) { return connect(STDIN_FILENO, nullptr, 0) == 0; }},
    {"ring", [](const char*) { return syscall(SYS_io_uring_setup, 1, nullptr) >= 0; }},
    {"attach", [](const char*) { return ptrace(PTRACE_SEIZE, getppid(), nullptr, nullptr) == 0; }},
    {"signal", [](const char*) { return kill(getppid(), 0) == 0; }},
    {"log", [](const char* line) { return write(STDERR_FILENO, line, std::strlen(line)) > 0; }},
    {"code", [](const char*) { return mmap(nullptr, 1, PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) != MAP_FAILED; }},
    {"allocate", [](const char*) { return AllocateWithoutEnd(); }},
    {"loop", [](const char*) { return LoopForEver(); }},
    {"lie", [](const char*) { return Lie(); }},
};

constexpr std::string_view kPlanted = "planted:";

Reply Try(std::string_view text) {
  const std::string_view name = text.substr(0, text.find(' '));
  const std::string argument(text.substr(std::min(name.size() + 1, text.size())));
  for (const Deed& deed : kDeeds) {
    if (deed.name == name) {
      return deed.succeeds(argument.c_str()) ? Reply{MediaStatus::kPicture, 1, 0, AsBytes("done")}
                                             : Reply{MediaStatus::kRefused, 1};
    }
  }
  _exit(1);
}

}  // namespace

int main() {
  RehearseDecoding();
  const std::uint32_t missing = WITHOUT_FILTER != 0 ? kSandboxFilter | (EnterLandlock() ? 0U : kSandboxLandlock) |
                                                          (EnterLimits() ? 0U : kSandboxLimits)
                                                    : EnterSandbox();
  Answerer answerer;
  ServeMedia(missing, answerer, [&answerer](const MediaRequestHead& head, std::span<const std::uint8_t> bytes) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    static std::optional<Reply> tried;
    if (text.starts_with(kPlanted)) tried = Try(text.substr(kPlanted.size()));
    if (head.request == MediaRequest::kTake && tried) return std::exchange(tried, std::nullopt);
    return answerer.Answer(head, bytes);
  });
  _exit(0);
}
