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
#include <utility>
#include <vector>

#include "recorder/utility/handle.h"

namespace end_to_end {

/// What goes wrong on the way to a camera, or with the bytes that come from it, counted over all connections.
struct NetworkFault {
  enum class Verb {
    kNone,
    kRefuse,   ///< nothing listens
    kFull,     ///< the queue of connections is full, and none is accepted
    kDelay,    ///< each piece comes `amount` milliseconds late
    kCut,      ///< `amount` bytes come; this connection and every later one is closed where the next byte would come
    kSlice,    ///< in segments of `amount` bytes
    kDrip,     ///< `amount` bytes a second
    kCorrupt,  ///< byte number `amount` comes with all its bits flipped
  };
  Verb verb = Verb::kNone;
  std::size_t amount = 0;
};

/// The network before a camera: TCP connections to a free port lead to a camera at 127.0.0.1.
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
    if (fault.verb == Verb::kRefuse) return;
    listener_ = Bind();
    if (listen(listener_.Get(), fault.verb == Verb::kFull ? 0 : SOMAXCONN) != 0)
      throw std::runtime_error("no listener");
    if (fault.verb == Verb::kFull) return Fill();
    acceptor_ = std::jthread([this](const std::stop_token& stop) { Accept(stop); });
  }

  /// The bytes that were handed on from the camera.
  std::string Passed() const {
    const std::lock_guard lock(mutex_);
    return passed_;
  }

 private:
  using Verb = NetworkFault::Verb;
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
    acceptor_ = std::jthread();  // joins, after all connections
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
    std::vector<std::jthread> connections;
    for (pollfd entry{listener_.Get(), POLLIN, 0}; !stop.stop_requested();) {
      if (poll(&entry, 1, kGlanceMs) <= 0) continue;
      Descriptor client(accept4(entry.fd, nullptr, nullptr, SOCK_CLOEXEC));
      connections.emplace_back([this, client = std::move(client)](Stopping end) { Carry(end, client.Get()); });
    }
  }

  void Carry(Stopping stop, int client) {
    const int on = 1;
    setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    const Address address = AddressOf("127.0.0.1", cameraPort_);
    const Descriptor camera = MakeSocket(address);
    if (connect(camera.Get(), address->ai_addr, address->ai_addrlen) != 0) return;
    while (!stop.stop_requested()) {
      pollfd ends[] = {{client, POLLIN, 0}, {camera.Get(), POLLIN, 0}};
      poll(ends, std::size(ends), kGlanceMs);
      if (ends[0].revents != 0) {
        const std::string asked = Receive(client);
        if (asked.empty() || !Send(camera.Get(), asked)) return;
      }
      if (ends[1].revents != 0) {
        const std::string answered = Receive(camera.Get());
        if (answered.empty() || !HandOn(stop, client, answered)) return;
      }
    }
  }

  /// False when the connection is over.
  bool HandOn(Stopping stop, int client, std::string bytes) {
    const std::size_t left = fault_.amount - Passed().size();  // wraps around once a byte to corrupt has passed
    switch (fault_.verb) {
      case Verb::kDelay:
        return Sleep(stop, fault_.amount) && Pass(client, bytes);
      case Verb::kSlice:
        return PassPieces(stop, client, bytes, 0);
      case Verb::kDrip:
        return PassPieces(stop, client, bytes, 1000);
      case Verb::kCut:
        return Pass(client, bytes.substr(0, left)) && bytes.size() <= left;
      case Verb::kCorrupt:
        if (left < bytes.size()) bytes[left] = static_cast<char>(~bytes[left]);
        return Pass(client, bytes);
      default:
        return Pass(client, bytes);
    }
  }

  bool PassPieces(Stopping stop, int client, std::string_view bytes, std::size_t pauseMs) {
    for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), fault_.amount))) {
      if (!Pass(client, bytes.substr(0, fault_.amount)) || !Sleep(stop, pauseMs)) return false;
      std::this_thread::sleep_for(std::chrono::microseconds(50));  // so that it is a segment of its own
    }
    return true;
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
