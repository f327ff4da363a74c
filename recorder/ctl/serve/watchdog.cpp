#include "recorder/ctl/serve/watchdog.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <condition_variable>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <mutex>
#include <string_view>
#include <utility>

#include "recorder/utility/handle.h"
#include "recorder/utility/log.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

std::string Variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

/// False, with errno: nobody is there to hear it. A name that begins with '@' is one of no file (unix(7), abstract).
bool Send(const std::string& name, std::string_view text) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  if (name.size() >= sizeof(address.sun_path)) {
    errno = ENAMETOOLONG;
    return false;
  }
  std::memcpy(address.sun_path, name.data(), name.size());
  if (name.front() == '@') address.sun_path[0] = '\0';
  const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
  const FileDescriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  const auto* target = reinterpret_cast<const sockaddr*>(&address);
  return sendto(socket.Get(), text.data(), text.size(), MSG_NOSIGNAL, target, size) == std::ssize(text);
}

/// The service manager would end this process without a word.
void TellManager(const std::string& socket) {
  if (Send(socket, "WATCHDOG=1")) return;
  LogFailure("The service manager's watchdog cannot be told at " + socket + ": " + strerrordesc_np(errno) + ".");
}

void Tell(const std::stop_token& stop, const WatchdogWish& wish,
          const std::function<bool(const std::stop_token&)>& isAlive) {
  std::mutex mutex;
  std::condition_variable_any isOver;
  std::unique_lock lock(mutex);
  while (!stop.stop_requested()) {
    if (isAlive(stop)) TellManager(wish.socket);
    isOver.wait_for(lock, stop, wish.within / 3, [] { return false; });
  }
}

}  // namespace

std::optional<WatchdogWish> WantedWatchdog() {
  const std::string process = Variable("WATCHDOG_PID");
  const auto within = ParseNumber<std::int64_t>(Variable("WATCHDOG_USEC"));
  std::string socket = Variable("NOTIFY_SOCKET");
  const bool isForOther = !process.empty() && process != std::to_string(getpid());
  if (socket.empty() || isForOther || !within || *within <= 0) return std::nullopt;
  return WatchdogWish{std::move(socket), std::chrono::microseconds(*within)};
}

Watchdog::Watchdog(std::function<bool(const std::stop_token&)> isAlive) {
  auto wish = WantedWatchdog();
  if (!wish) return;
  thread_ = std::jthread([wish = *std::move(wish), isAlive = std::move(isAlive)](const std::stop_token& stop) {
    Tell(stop, wish, isAlive);
  });
}

}  // namespace recorder
