#include "recorder/media/media_channel.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>

#include <cerrno>
#include <vector>

#include "recorder/utility/wait.h"

namespace recorder {
namespace {

/// Where there is a deadline, the waiting is done by poll().
int FlagsFor(Clock::time_point deadline) { return deadline == MediaChannel::kForever ? 0 : MSG_DONTWAIT; }

bool IsOnlyLater(int error) { return error == EAGAIN || error == EINTR; }

/// Takes `sent` bytes off the front of what is to be sent.
void Advance(std::vector<iovec>& parts, std::size_t sent) {
  while (!parts.empty() && sent >= parts.front().iov_len) {
    sent -= parts.front().iov_len;
    parts.erase(parts.begin());
  }
  if (sent == 0) return;
  parts.front().iov_base = static_cast<char*>(parts.front().iov_base) + sent;
  parts.front().iov_len -= sent;
}

}  // namespace

bool MediaChannel::Send(std::initializer_list<std::span<const std::uint8_t>> parts, Clock::time_point deadline) {
  std::vector<iovec> left;
  for (const auto part : parts) left.push_back({const_cast<std::uint8_t*>(part.data()), part.size()});
  for (Advance(left, 0); !left.empty();) {
    msghdr message{};
    message.msg_iov = left.data();
    message.msg_iovlen = left.size();
    const ssize_t sent = sendmsg(end_.Get(), &message, MSG_NOSIGNAL | FlagsFor(deadline));
    if (sent >= 0) Advance(left, static_cast<std::size_t>(sent));
    if (sent < 0 && (!IsOnlyLater(errno) || !WaitFor(POLLOUT, deadline))) return false;
  }
  return true;
}

bool MediaChannel::Receive(std::span<std::uint8_t> target, Clock::time_point deadline) {
  while (!target.empty()) {
    const ssize_t received = recv(end_.Get(), target.data(), target.size(), FlagsFor(deadline));
    if (received > 0) target = target.subspan(static_cast<std::size_t>(received));
    if (received == 0 || (received < 0 && (!IsOnlyLater(errno) || !WaitFor(POLLIN, deadline)))) return false;
  }
  return true;
}

bool MediaChannel::IsQuiet() const {
  char byte = 0;
  return recv(end_.Get(), &byte, 1, MSG_PEEK | MSG_DONTWAIT) < 0 && errno == EAGAIN;
}

bool MediaChannel::Wait(Clock::time_point deadline) const { return WaitFor(POLLIN, deadline); }

bool MediaChannel::WaitFor(short event, Clock::time_point deadline) const {
  // Where there is none, a call that waits by itself was interrupted.
  return deadline == kForever || recorder::WaitFor(end_.Get(), event, deadline);
}

}  // namespace recorder
