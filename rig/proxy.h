#pragma once

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>
#include <thread>
#include <tuple>
#include <vector>

#include "recorder/utility/handle.h"

namespace end_to_end {

/// What goes wrong on the way to a camera, or with the bytes that come from it, counted over all connections.
struct NetworkFault {
  static constexpr std::size_t kNever = std::string::npos;

  bool isRefusing = false;           ///< nothing listens
  bool isFull = false;               ///< the queue of connections is full, and none is accepted
  std::size_t delayMs = 0;           ///< each piece comes so late
  std::size_t sliceSize = kNever;    ///< of each piece, in bytes
  std::size_t cutAfter = kNever;     ///< this connection and every later one is closed where the next byte would come
  std::size_t corruptByte = kNever;  ///< comes with all its bits flipped
};

/// The network before a camera: TCP connections to a free port lead to a camera at 127.0.0.1, one after the other, as
/// the recorder has them.
class Proxy {
 public:
  /// At `host`, a numeric address; throws when it is none of this machine's. Refuses connections for now.
  explicit Proxy(const std::string& host = "127.0.0.1") : host_(host), reserved_(Bind()) {}
  ~Proxy() { Stop(); }
  Proxy(const Proxy&) = delete;
  Proxy& operator=(const Proxy&) = delete;

  int Port() const {
    sockaddr_in6 address{};  // sockaddr_in has its port at the same place
    socklen_t size = sizeof address;
    getsockname(reserved_.Get(), reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin6_port);
  }

  /// Closes all connections. Those that follow lead to `cameraPort`, and counting begins anew.
  void LeadTo(int cameraPort, NetworkFault fault = {}) {
    Stop();
    cameraPort_ = cameraPort;
    fault_ = fault;
    passed_.clear();
    if (fault.isRefusing) return;
    listener_ = Bind();
    if (listen(listener_.Get(), fault.isFull ? 0 : SOMAXCONN) != 0) throw std::runtime_error("no listener");
    if (fault.isFull) return Fill();
    acceptor_ = std::jthread([this](const std::stop_token& stop) { Accept(stop); });
  }

  /// The bytes that were handed on from the camera.
  std::string Passed() const {
    const std::lock_guard lock(mutex_);
    return passed_;
  }

 private:
  using Descriptor = recorder::FileDescriptor;
  using Address = std::unique_ptr<addrinfo, recorder::Deleter<freeaddrinfo>>;
  using Stopping = const std::stop_token&;

  static constexpr int kGlanceMs = 10;  // how often a thread looks whether it has to stop

  static Address AddressOf(const std::string& host, int port) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    addrinfo* list = nullptr;
    const int error = getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &list);
    if (error != 0) throw std::runtime_error("no address " + host);
    return Address(list);
  }

  static Descriptor MakeSocket(const Address& address, int flags = 0) {
    return Descriptor(socket(address->ai_family, SOCK_STREAM | SOCK_CLOEXEC | flags, 0));
  }

  static bool Send(int connection, std::string_view bytes) {
    return send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
  }

  /// What has come; "" when the connection was closed.
  static std::string Receive(int connection) {
    std::string bytes(std::size_t{16} << 10, '\0');
    const ssize_t size = recv(connection, bytes.data(), bytes.size(), 0);
    bytes.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return bytes;
  }

  static bool Sleep(Stopping stop, std::size_t milliseconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (!stop.stop_requested() && std::chrono::steady_clock::now() < end) poll(nullptr, 0, kGlanceMs);
    return !stop.stop_requested();
  }

  void Stop() {
    acceptor_ = std::jthread();  // joins
    listener_ = Descriptor();
    waiting_.clear();
  }

  Descriptor Bind() const {
    const Address address = AddressOf(host_, reserved_ ? Port() : 0);
    Descriptor bound = MakeSocket(address);
    const int on = 1;
    setsockopt(bound.Get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (bind(bound.Get(), address->ai_addr, address->ai_addrlen) != 0) throw std::runtime_error("no address " + host_);
    return bound;
  }

  void Fill() {
    const Address address = AddressOf(host_, Port());
    pollfd newest{-1, POLLOUT, 0};
    do {
      newest.fd = waiting_.emplace_back(MakeSocket(address, SOCK_NONBLOCK)).Get();
      std::ignore = connect(newest.fd, address->ai_addr, address->ai_addrlen);
    } while (poll(&newest, 1, 10 * kGlanceMs) > 0);
  }

  void Accept(Stopping stop) {
    for (pollfd entry{listener_.Get(), POLLIN, 0}; !stop.stop_requested();) {
      if (poll(&entry, 1, kGlanceMs) > 0) Carry(stop, Descriptor(accept4(entry.fd, nullptr, nullptr, SOCK_CLOEXEC)));
    }
  }

  void Carry(Stopping stop, const Descriptor& client) {
    const int on = 1;
    setsockopt(client.Get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    const Address address = AddressOf("127.0.0.1", cameraPort_);
    const Descriptor camera = MakeSocket(address);
    if (connect(camera.Get(), address->ai_addr, address->ai_addrlen) != 0) return;
    while (!stop.stop_requested()) {
      pollfd ends[] = {{client.Get(), POLLIN, 0}, {camera.Get(), POLLIN, 0}};
      poll(ends, std::size(ends), kGlanceMs);
      if (ends[0].revents != 0) {
        const std::string asked = Receive(client.Get());
        if (asked.empty() || !Send(camera.Get(), asked)) return;
      }
      if (ends[1].revents != 0) {
        const std::string answered = Receive(camera.Get());
        if (answered.empty() || !HandOn(stop, client.Get(), answered)) return;
      }
    }
  }

  /// False when the connection is over.
  bool HandOn(Stopping stop, int client, std::string bytes) {
    const std::size_t passed = Passed().size();
    const std::size_t left = fault_.cutAfter - passed;
    const std::size_t corrupt = fault_.corruptByte - passed;  // wraps around once that byte has passed
    if (corrupt < bytes.size()) bytes[corrupt] = static_cast<char>(~bytes[corrupt]);
    for (std::string_view rest = std::string_view(bytes).substr(0, left); !rest.empty();) {
      const std::string_view piece = rest.substr(0, fault_.sliceSize);
      if (!Sleep(stop, fault_.delayMs) || !Pass(client, piece)) return false;
      rest.remove_prefix(piece.size());
      std::this_thread::sleep_for(std::chrono::microseconds(50));  // so that it is a segment of its own
    }
    return bytes.size() <= left;
  }

  bool Pass(int client, std::string_view bytes) {
    const std::lock_guard lock(mutex_);
    passed_ += bytes;
    return Send(client, bytes);
  }

  const std::string host_;
  const Descriptor reserved_;  // never listens, but keeps the port
  Descriptor listener_;
  std::vector<Descriptor> waiting_;  // connections that fill a queue
  int cameraPort_ = 0;
  NetworkFault fault_;
  mutable std::mutex mutex_;
  std::string passed_;  // under the mutex
  std::jthread acceptor_;
};

}  // namespace end_to_end
