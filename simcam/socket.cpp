#include "simcam/socket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <bit>
#include <cerrno>
#include <system_error>
#include <thread>

namespace simcam {
namespace {

[[noreturn]] void ThrowErrno(const std::string& what) { throw std::system_error(errno, std::generic_category(), what); }

}  // namespace

Socket& Socket::operator=(Socket&& other) noexcept {
  other.descriptor_ = descriptor_.exchange(other.descriptor_);
  return *this;
}

Socket::~Socket() {
  if (descriptor_ >= 0) close(descriptor_);
}

Socket Socket::Bind(const std::string& host, int port) {
  Socket listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!listener.IsOpen()) ThrowErrno("socket");
  const int on = 1;
  setsockopt(listener.descriptor_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = inet_addr(host.c_str());
  address.sin_port = htons(static_cast<in_port_t>(port));
  if (::bind(listener.descriptor_, std::bit_cast<const sockaddr*>(&address), sizeof address) != 0) {
    ThrowErrno(host + " port " + std::to_string(port));
  }
  return listener;
}

void Socket::Listen() const {
  if (listen(descriptor_, SOMAXCONN) != 0) ThrowErrno("listen");
}

int Socket::Port() const {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  if (getsockname(descriptor_, std::bit_cast<sockaddr*>(&address), &size) != 0) ThrowErrno("getsockname");
  return ntohs(address.sin_port);
}

Socket Socket::Accept() const {
  Socket connection(accept4(descriptor_, nullptr, nullptr, SOCK_CLOEXEC));
  if (!connection.IsOpen()) return connection;
  const int on = 1;
  setsockopt(connection.descriptor_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  return connection;
}

bool Socket::Send(std::string_view bytes) const {
  while (!bytes.empty()) {
    const ssize_t sent = send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent <= 0) return false;
    bytes.remove_prefix(static_cast<size_t>(sent));
  }
  return true;
}

bool Socket::Drip(std::string_view bytes) const {
  for (size_t i = 0; i < bytes.size(); ++i) {
    if (!Send(bytes.substr(i, 1))) return false;
    std::this_thread::sleep_for(std::chrono::seconds(1));
  }
  return true;
}

bool Socket::IsEstablished() const { return simcam::IsEstablished(descriptor_); }

bool Socket::WaitReadable(std::chrono::milliseconds limit) const {
  pollfd entry{descriptor_, POLLIN, 0};
  return poll(&entry, 1, static_cast<int>(limit.count())) > 0;
}

bool Socket::Receive(std::string& buffer) const {
  std::array<char, 16384> bytes{};
  ssize_t got = 0;
  do {
    got = recv(descriptor_, bytes.data(), bytes.size(), 0);
  } while (got < 0 && errno == EINTR);
  if (got <= 0) return false;
  buffer.append(bytes.data(), static_cast<size_t>(got));
  return true;
}

void Socket::Shutdown() const { shutdown(descriptor_, SHUT_RDWR); }

void Socket::SendAtEnd() const {
  const int on = 1;
  setsockopt(descriptor_, IPPROTO_TCP, TCP_CORK, &on, sizeof on);
}

void Socket::Reset() const {
  const sockaddr nobody{.sa_family = AF_UNSPEC, .sa_data = {}};
  static_cast<void>(connect(descriptor_, &nobody, sizeof nobody));  // Linux sends a reset, and it cannot fail
}

bool IsEstablished(int descriptor) {
  tcp_info info{};
  socklen_t size = sizeof info;
  return getsockopt(descriptor, IPPROTO_TCP, TCP_INFO, &info, &size) == 0 && info.tcpi_state == TCP_ESTABLISHED;
}

int Socket::Release() { return descriptor_.exchange(-1); }

}  // namespace simcam
