#include "bench/fleet.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <stdexcept>
#include <utility>

#include "rig/http_client.h"
#include "rig/recorder.h"

namespace bench {

namespace {

constexpr int kHostsOfNet = 250;
constexpr std::chrono::milliseconds kGlance{100};  // how often the thread looks whether it has to stop

std::string DottedOf(int camera, const std::string& net) {
  return net + std::to_string(camera / kHostsOfNet) + '.' + std::to_string(camera % kHostsOfNet + 1);
}

/// Of the address 127.1.x.y where it was connected to.
std::size_t CameraAt(int socket) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
  const std::uint32_t host = ntohl(address.sin_addr.s_addr);
  return ((host >> 8U) & 0xFFU) * kHostsOfNet + (host & 0xFFU) - 1;
}

recorder::FileDescriptor ListenInOwnNetwork() {
  if (!rig::EnterOwnNetwork()) throw std::runtime_error("no network of its own can be had here");
  recorder::FileDescriptor listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(Fleet::kPort);
  if (bind(listener.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      listen(listener.Get(), SOMAXCONN) != 0) {
    throw std::runtime_error("nobody can listen at port 554");
  }
  return listener;
}

/// Loopback takes packets to other machines, and loses them.
void LosePackets() {
  const auto route = rig::Run("/usr/bin/env", {"ip", "route", "add", Fleet::kSilentRange, "dev", "lo"});
  if (route.status != 0) throw std::runtime_error("no route to silent cameras: " + route.output);
}

std::string Rtsp(const char* status, const std::string& request, const std::string& headers,
                 const std::string& body = {}) {
  return std::string("RTSP/1.0 ") + status + "\r\nCSeq: " + rig::HeaderOf(request, "CSeq") + "\r\n" + headers +
         "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

constexpr char kStream[] =
    "v=0\r\no=- 1 1 IN IP4 127.0.0.1\r\ns=camera\r\nt=0 0\r\nm=video 0 RTP/AVP 96\r\na=rtpmap:96 H264/90000\r\n"
    "a=control:video\r\n";

}  // namespace

Fleet::Fleet(const FleetOptions& options)
    : cameras_(static_cast<std::size_t>(options.cameras)),
      listener_(ListenInOwnNetwork()),
      events_(epoll_create1(EPOLL_CLOEXEC)) {
  Deal(options);
  LosePackets();
  epoll_event event{.events = EPOLLIN, .data = {.fd = listener_.Get()}};
  epoll_ctl(events_.Get(), EPOLL_CTL_ADD, listener_.Get(), &event);
  thread_ = std::jthread([this](const std::stop_token& stop) { Serve(stop); });
}

/// The same each time, in no order.
void Fleet::Deal(const FleetOptions& options) {
  std::mt19937 random(7);
  std::vector<std::size_t> order(cameras_.size());
  std::iota(order.begin(), order.end(), 0);
  std::shuffle(order.begin(), order.end(), random);
  const auto silent = static_cast<std::size_t>(options.silent);
  const auto changing = static_cast<std::size_t>(options.changing);
  for (std::size_t i = 0; i < order.size(); ++i) {
    Camera& camera = cameras_[order[i]];
    camera.isSilent = i < silent;
    camera.isChanging = !camera.isSilent && i < silent + changing;
    const auto spread = static_cast<unsigned>((options.latest - options.soonest).count()) + 1;
    camera.delay = options.soonest + std::chrono::milliseconds(random() % spread);
  }
}

std::string Fleet::HostOf(int camera) const { return DottedOf(camera, IsSilent(camera) ? "198.18." : "127.1."); }

Fleet::Seen Fleet::All() const {
  const std::lock_guard lock(mutex_);
  return seen_;
}

std::vector<std::chrono::milliseconds> Fleet::TakeLongest() {
  const std::lock_guard lock(mutex_);
  std::vector<std::chrono::milliseconds> longest;
  longest.reserve(cameras_.size());
  for (Camera& camera : cameras_) longest.push_back(std::exchange(camera.longest, {}));
  return longest;
}

void Fleet::Serve(const std::stop_token& stop) {
  std::array<epoll_event, 64> events{};
  while (!stop.stop_requested()) {
    auto wait = kGlance;
    if (!replies_.empty()) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(replies_.top().due - Time::clock::now());
      wait = std::clamp(left, std::chrono::milliseconds(0), kGlance);
    }
    const int count = epoll_wait(events_.Get(), events.data(), events.size(), static_cast<int>(wait.count()));
    const std::lock_guard lock(mutex_);
    for (int i = 0; i < count; ++i) {
      const int socket = events[static_cast<std::size_t>(i)].data.fd;
      socket == listener_.Get() ? Accept() : Hear(socket);
    }
    SendDue();
  }
}

void Fleet::Accept() {
  while (true) {
    recorder::FileDescriptor socket(accept4(listener_.Get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!socket) return;
    const int number = socket.Get();
    const int on = 1;
    setsockopt(number, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    const std::size_t at = CameraAt(number);
    if (at >= cameras_.size()) continue;
    seen_.mostAtOnce = std::max(seen_.mostAtOnce, ++cameras_[at].open);
    epoll_event event{.events = EPOLLIN, .data = {.fd = number}};
    epoll_ctl(events_.Get(), EPOLL_CTL_ADD, number, &event);
    connections_.insert_or_assign(number, Connection{std::move(socket), at, Time::clock::now()});
  }
}

void Fleet::Hear(int socket) {
  Connection& connection = connections_.at(socket);
  std::array<char, 4096> bytes{};
  const ssize_t size = recv(socket, bytes.data(), bytes.size(), 0);
  if (size <= 0) return End(socket);
  connection.received.append(bytes.data(), static_cast<std::size_t>(size));
  while (const std::size_t length = rig::MessageSize(connection.received)) {
    Answer(connection, connection.received.substr(0, length));
    connection.received.erase(0, length);
    seen_.tests += std::exchange(connection.hasAsked, true) ? 0 : 1;
  }
}

void Fleet::Answer(const Connection& connection, const std::string& request) {
  Camera& camera = cameras_[connection.camera];
  replies_.push(
      {Time::clock::now() + camera.delay, connection.socket.Get(), connection.since, AnswerTo(camera, request)});
}

std::string Fleet::AnswerTo(Camera& camera, const std::string& request) {
  constexpr char kRight[] = "Basic YWRtaW46c2VjcmV0";  // of kUser and kPassword
  if (request.find(" RTSP/1.0\r\n") == std::string::npos) return "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n";
  const std::string login = rig::HeaderOf(request, "Authorization");
  if (login != kRight) {
    seen_.refusedLogins += login.empty() ? 0 : 1;
    return Rtsp("401 Unauthorized", request, "WWW-Authenticate: Basic realm=\"camera\"\r\n");
  }
  if (request.starts_with("SETUP ")) {
    return Rtsp("200 OK", request, "Session: 1\r\nTransport: " + rig::HeaderOf(request, "Transport") + "\r\n");
  }
  if (camera.isChanging && camera.streamsAsked++ % 2 == 1) return Rtsp("404 Not Found", request, "");
  return Rtsp("200 OK", request, "Content-Type: application/sdp\r\n", kStream);
}

void Fleet::SendDue() {
  for (const Time now = Time::clock::now(); !replies_.empty() && replies_.top().due <= now; replies_.pop()) {
    const Reply& reply = replies_.top();
    const auto found = connections_.find(reply.socket);
    if (found == connections_.end() || found->second.since != reply.connectedAt) continue;
    send(reply.socket, reply.text.data(), reply.text.size(), MSG_NOSIGNAL);
  }
}

void Fleet::End(int socket) {
  const auto found = connections_.find(socket);
  Camera& camera = cameras_[found->second.camera];
  --camera.open;
  seen_.knocks += found->second.hasAsked ? 0 : 1;
  const auto time = std::chrono::duration_cast<std::chrono::milliseconds>(Time::clock::now() - found->second.since);
  camera.longest = std::max(camera.longest, time);
  epoll_ctl(events_.Get(), EPOLL_CTL_DEL, socket, nullptr);  // a process that is being started may have it, too
  connections_.erase(found);
}

}  // namespace bench
