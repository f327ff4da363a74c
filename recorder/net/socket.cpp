#include "recorder/net/socket.h"

#include <fcntl.h>
#include <linux/tcp.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <condition_variable>
#include <cstddef>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "recorder/utility/address_policy.h"
#include "recorder/utility/text.h"
#include "recorder/utility/wait.h"

namespace recorder {
namespace {

using AddressList = std::unique_ptr<addrinfo, Deleter<freeaddrinfo>>;

/// A lookup that may outlive whoever asked for it: getaddrinfo cannot be told when to give up.
struct Lookup {
  std::mutex mutex;
  std::condition_variable done;
  bool isDone = false;
  AddressList addresses;
};

AddressList GetAddresses(const std::string& host, int port, int flags) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = flags | AI_NUMERICSERV;
  addrinfo* list = nullptr;
  return AddressList(getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &list) == 0 ? list : nullptr);
}

Outcome LookUpName(const std::string& host, int port, Clock::time_point deadline, AddressList& addresses) {
  const auto lookup = std::make_shared<Lookup>();
  try {
    std::thread([lookup, host, port] {
      AddressList found = GetAddresses(host, port, AI_ADDRCONFIG);
      const std::lock_guard lock(lookup->mutex);
      lookup->addresses = std::move(found);
      lookup->isDone = true;
      lookup->done.notify_one();
    }).detach();
  } catch (const std::system_error&) {
    return Outcome::kUnreachable;  // no thread to be had
  }
  std::unique_lock lock(lookup->mutex);
  if (!lookup->done.wait_until(lock, deadline, [&] { return lookup->isDone; })) return Outcome::kTimedOut;
  addresses = std::move(lookup->addresses);
  return addresses ? Outcome::kOk : Outcome::kUnreachable;
}

Outcome Resolve(const std::string& host, int port, Clock::time_point deadline, AddressList& addresses) {
  // A control character would end the name for the lookup alone, and go on where the host becomes part of a request.
  if (host.empty() || HoldsControls(host)) return Outcome::kUnreachable;
  if (port < 0 || port > std::numeric_limits<std::uint16_t>::max()) return Outcome::kUnreachable;
  const std::string name(WithoutBrackets(host));
  addresses = GetAddresses(name, port, AI_NUMERICHOST);
  return addresses ? Outcome::kOk : LookUpName(name, port, deadline, addresses);
}

Outcome ConnectToAddress(const addrinfo& address, Clock::time_point deadline, FileDescriptor& connection) {
  FileDescriptor candidate;
  const std::optional<Outcome> known = BeginConnecting(*address.ai_addr, address.ai_addrlen, candidate);
  if (!known && !WaitFor(candidate.Get(), POLLOUT, deadline)) return Outcome::kTimedOut;
  if (const Outcome outcome = known ? *known : EndOfConnecting(candidate); outcome != Outcome::kOk) return outcome;
  const int on = 1;
  setsockopt(candidate.Get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  connection = std::move(candidate);
  return Outcome::kOk;
}

Outcome ConnectToAny(const std::string& host, int port, Clock::time_point deadline, FileDescriptor& connection) {
  AddressList addresses;
  if (const Outcome outcome = Resolve(host, port, deadline, addresses); outcome != Outcome::kOk) return outcome;
  int left = 0;
  for (const addrinfo* address = addresses.get(); address != nullptr; address = address->ai_next) ++left;

  Outcome failure = Outcome::kBlocked;
  for (const addrinfo* address = addresses.get(); address != nullptr; address = address->ai_next, --left) {
    // A silent address gets its share of the time, so that the next one has a chance.
    const Clock::time_point now = Clock::now();
    const Outcome outcome = ConnectToAddress(*address, now + (deadline - now) / left, connection);
    if (outcome == Outcome::kOk) return outcome;
    const bool tellsMore = outcome == Outcome::kTimedOut || failure == Outcome::kBlocked;
    if (tellsMore) failure = outcome;
  }
  return failure;
}

/// What the system tells of a connection, as far as the member of `size` bytes at `offset`.
std::optional<tcp_info> InfoOf(int connection, std::size_t offset, std::size_t size) {
  tcp_info info{};
  socklen_t known = sizeof info;
  const bool isKnown = getsockopt(connection, IPPROTO_TCP, TCP_INFO, &info, &known) == 0 && known >= offset + size;
  return isKnown ? std::optional(info) : std::nullopt;
}

bool WouldBlock(int error) { return error == EAGAIN || error == EWOULDBLOCK || error == EINTR; }

}  // namespace

std::optional<Outcome> BeginConnecting(const sockaddr& address, socklen_t size, FileDescriptor& connection) {
  if (!MayConnectTo(address)) return Outcome::kBlocked;
  connection = FileDescriptor(socket(address.sa_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!connection) return Outcome::kUnreachable;
  if (connect(connection.Get(), &address, size) == 0) return Outcome::kOk;
  return errno == EINPROGRESS ? std::nullopt : std::optional(Outcome::kUnreachable);
}

Outcome EndOfConnecting(const FileDescriptor& connection) {
  int error = 0;
  socklen_t size = sizeof error;
  getsockopt(connection.Get(), SOL_SOCKET, SO_ERROR, &error, &size);
  if (error == 0) return Outcome::kOk;
  return error == ETIMEDOUT ? Outcome::kTimedOut : Outcome::kUnreachable;
}

Outcome ConnectTo(const std::string& host, int port, Clock::time_point deadline, FileDescriptor& connection) {
  RungTimes& rungs = RequestScope::Current().Rungs();
  rungs.Enter(Rung::kConnect);
  const Outcome outcome = ConnectToAny(host, port, deadline, connection);
  rungs.Enter(Rung::kDescribe);
  return outcome;
}

std::uint64_t BytesReceived(int connection) {
  const auto info = InfoOf(connection, offsetof(tcp_info, tcpi_bytes_received), sizeof(tcp_info::tcpi_bytes_received));
  return info ? info->tcpi_bytes_received : 0;
}

Outcome Socket::Connect(const std::string& host, int port, Clock::time_point deadline) {
  *this = Socket();
  return ConnectTo(host, port, deadline, descriptor_);
}

Outcome Socket::Write(std::span<const std::uint8_t> bytes, Clock::time_point deadline) {
  while (!bytes.empty()) {
    const ssize_t sent = send(descriptor_.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent >= 0) {
      written_ += static_cast<std::uint64_t>(sent);
      bytes = bytes.subspan(static_cast<std::size_t>(sent));
    } else if (!WouldBlock(errno)) {
      hasFailed_ = true;
      return Outcome::kNotUnderstood;
    } else if (!WaitFor(descriptor_.Get(), POLLOUT, deadline)) {
      return Outcome::kTimedOut;
    }
  }
  return Outcome::kOk;
}

Outcome Socket::Read(std::span<std::uint8_t> space, Clock::time_point deadline, std::size_t& received) {
  received = 0;
  while (WaitFor(descriptor_.Get(), POLLIN, deadline)) {
    const ssize_t size = recv(descriptor_.Get(), space.data(), space.size(), 0);
    if (size < 0 && WouldBlock(errno)) continue;
    hasFailed_ = size < 0;  // a reset is a way of closing
    received = size > 0 ? static_cast<std::size_t>(size) : 0;
    return Outcome::kOk;
  }
  return Outcome::kTimedOut;
}

bool Socket::WasClosedUnread() const {
  if (hasFailed_) return false;
  const auto info = InfoOf(descriptor_.Get(), offsetof(tcp_info, tcpi_bytes_acked), sizeof(tcp_info::tcpi_bytes_acked));
  return info && info->tcpi_bytes_acked < written_;
}

}  // namespace recorder
