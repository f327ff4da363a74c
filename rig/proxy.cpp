#include "rig/proxy.h"

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <chrono>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <tuple>

namespace rig {

namespace {

using Address = std::unique_ptr<addrinfo, recorder::Deleter<freeaddrinfo>>;

constexpr int kGlanceMs = 10;  // how often a thread looks whether it has to stop
constexpr std::chrono::seconds kRelaySilenceLimit{60};

Address AddressOf(const std::string& host, int port) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
  addrinfo* list = nullptr;
  const int error = getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &list);
  if (error != 0) throw std::runtime_error("no address " + host);
  return Address(list);
}

recorder::FileDescriptor MakeSocket(const Address& address, int flags = 0) {
  return recorder::FileDescriptor(socket(address->ai_family, SOCK_STREAM | SOCK_CLOEXEC | flags, 0));
}

bool Sleep(const std::stop_token& stop, std::size_t milliseconds) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  while (!stop.stop_requested() && std::chrono::steady_clock::now() < end) poll(nullptr, 0, kGlanceMs);
  return !stop.stop_requested();
}

}  // namespace

int Proxy::Port() const {
  sockaddr_in6 address{};  // sockaddr_in has its port at the same place
  socklen_t size = sizeof address;
  getsockname(reserved_.Get(), reinterpret_cast<sockaddr*>(&address), &size);
  return ntohs(address.sin6_port);
}

void Proxy::LeadTo(int cameraPort, NetworkFault fault) {
  Stop();
  cameraPort_ = cameraPort;
  fault_ = fault;
  exchanges_.clear();
  if (fault.isRefusing) return;
  listener_ = Bind();
  if (listen(listener_.Get(), fault.isFull ? 0 : SOMAXCONN) != 0) throw std::runtime_error("no listener");
  if (fault.isFull) return Fill();
  acceptor_ = std::jthread([this](const std::stop_token& stop) { Accept(stop); });
}

std::vector<Proxy::Exchange> Proxy::Exchanges() const {
  const std::lock_guard lock(mutex_);
  return exchanges_;
}

std::string Proxy::Passed() const {
  std::string all;
  for (const Exchange& exchange : Exchanges()) all += exchange.passed;
  return all;
}

void Proxy::Stop() {
  acceptor_ = std::jthread();  // joins
  listener_ = Descriptor();
  waiting_.clear();
}

recorder::FileDescriptor Proxy::Bind() const {
  const Address address = AddressOf(host_, reserved_ ? Port() : 0);
  Descriptor bound = MakeSocket(address);
  const int on = 1;
  setsockopt(bound.Get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  if (bind(bound.Get(), address->ai_addr, address->ai_addrlen) != 0) throw std::runtime_error("no address " + host_);
  return bound;
}

void Proxy::Fill() {
  const Address address = AddressOf(host_, Port());
  pollfd newest{-1, POLLOUT, 0};
  do {
    newest.fd = waiting_.emplace_back(MakeSocket(address, SOCK_NONBLOCK)).Get();
    std::ignore = connect(newest.fd, address->ai_addr, address->ai_addrlen);
  } while (poll(&newest, 1, 10 * kGlanceMs) > 0);
}

void Proxy::Accept(Stopping stop) {
  for (pollfd entry{listener_.Get(), POLLIN, 0}; !stop.stop_requested();) {
    if (poll(&entry, 1, kGlanceMs) <= 0) continue;
    try {
      Carry(stop, Connection(listener_));
    } catch (const NoAnswer&) {  // no camera listens there
      continue;
    }
  }
}

void Proxy::Carry(Stopping stop, const Connection& client) {
  const int on = 1;
  setsockopt(client.Descriptor(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  const Connection camera(cameraPort_, kRelaySilenceLimit);
  while (!stop.stop_requested()) {
    pollfd ends[] = {{client.Descriptor(), POLLIN, 0}, {camera.Descriptor(), POLLIN, 0}};
    poll(ends, std::size(ends), kGlanceMs);
    std::string asked;
    if (ends[0].revents != 0) {
      if (!client.Receive(asked)) return;
      const std::lock_guard lock(mutex_);
      exchanges_.push_back({asked, ""});
    }
    std::string answered;
    if (!camera.Send(asked) || (ends[1].revents != 0 && !camera.Receive(answered))) return;
    if (!HandOn(stop, client, answered)) return;
  }
}

/// False when the connection is over.
bool Proxy::HandOn(Stopping stop, const Connection& client, std::string bytes) {
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

bool Proxy::Pass(const Connection& client, std::string_view bytes) {
  const std::lock_guard lock(mutex_);
  if (exchanges_.empty()) exchanges_.emplace_back();
  exchanges_.back().passed += bytes;
  return client.Send(bytes);
}

}  // namespace rig
