#include "bench/long_way.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <deque>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace bench {

using namespace rig;

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kGlanceMs = 10;  // how often a thread looks whether it has to stop
constexpr std::chrono::seconds kLongSilence{60};

recorder::FileDescriptor Listen() {
  recorder::FileDescriptor listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const bool isBound = bind(listener.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  if (!isBound || listen(listener.Get(), SOMAXCONN) != 0) throw std::runtime_error("no listener");
  return listener;
}

void SendAtOnce(const Connection& connection) {
  const int on = 1;
  setsockopt(connection.Descriptor(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

/// One direction of a connection.
class Lane {
 public:
  Lane(const Connection& from, const Connection& to, Clock::duration delay, Clock::time_point earliest)
      : from_(from), to_(to), delay_(delay), earliest_(earliest) {}

  pollfd Entry() const { return {hasEnded_ ? -1 : from_.Descriptor(), POLLIN, 0}; }
  void TakeIn() {
    std::string bytes;
    hasEnded_ = !from_.Receive(bytes);
    pieces_.push_back({std::max(Clock::now() + delay_, earliest_), std::move(bytes)});
  }

  int MillisecondsLeft() const {
    if (pieces_.empty()) return kGlanceMs;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(pieces_.front().due - Clock::now()).count();
    return static_cast<int>(std::clamp<std::int64_t>(left, 0, kGlanceMs));
  }
  /// Hands on what is due; false once the end is.
  bool HandOn() {
    for (; !pieces_.empty() && pieces_.front().due <= Clock::now(); pieces_.pop_front()) {
      if (pieces_.front().bytes.empty() || !to_.Send(pieces_.front().bytes)) return false;
    }
    return true;
  }

 private:
  struct Piece {
    Clock::time_point due;
    std::string bytes;  // empty: the end
  };

  const Connection& from_;
  const Connection& to_;
  const Clock::duration delay_;
  const Clock::time_point earliest_;
  bool hasEnded_ = false;
  std::deque<Piece> pieces_;
};

}  // namespace

LongWay::LongWay(int cameraPort, std::chrono::milliseconds delay)
    : cameraPort_(cameraPort), delay_(delay), listener_(Listen()), acceptor_([this](Stopping stop) { Accept(stop); }) {}

int LongWay::Port() const {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  getsockname(listener_.Get(), reinterpret_cast<sockaddr*>(&address), &size);
  return ntohs(address.sin_port);
}

void LongWay::Accept(Stopping stop) {
  for (pollfd entry{listener_.Get(), POLLIN, 0}; !stop.stop_requested();) {
    if (poll(&entry, 1, kGlanceMs) <= 0) continue;
    carriers_.emplace_back([this, client = std::make_unique<Connection>(listener_)](Stopping carrierStop) {
      Carry(carrierStop, *client);
    });
  }
}

void LongWay::Carry(Stopping stop, const Connection& client) const {
  const Connection camera(cameraPort_, kLongSilence);
  SendAtOnce(client);
  SendAtOnce(camera);
  const Clock::time_point accepted = Clock::now();
  Lane there(client, camera, delay_, accepted + 3 * delay_);
  Lane back(camera, client, delay_, accepted);
  while (!stop.stop_requested() && there.HandOn() && back.HandOn()) {
    pollfd ends[] = {there.Entry(), back.Entry()};
    poll(ends, std::size(ends), std::min(there.MillisecondsLeft(), back.MillisecondsLeft()));
    if (ends[0].revents != 0) there.TakeIn();
    if (ends[1].revents != 0) back.TakeIn();
  }
}

}  // namespace bench
