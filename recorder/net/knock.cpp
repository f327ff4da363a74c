#include "recorder/net/knock.h"

#include <arpa/inet.h>
#include <poll.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "recorder/net/socket.h"
#include "recorder/utility/wait.h"

namespace recorder {
namespace {

constexpr std::size_t kAtOnce = 64;
constexpr auto kPatience = std::chrono::seconds{1};
constexpr std::size_t kMostThreads = 32;
constexpr auto kPatienceWithEach = std::chrono::milliseconds{500};

/// One port at which somebody may answer.
struct Attempt {
  Ipv4Number address;
  int port;
  FileDescriptor connection;
};

/// The open ports of some addresses, all tried at once.
class Group {
 public:
  Group(std::span<const Ipv4Number> addresses, std::span<const int> ports) {
    for (const Ipv4Number address : addresses) {
      for (const int port : ports) Begin(address, port);
    }
  }

  std::map<Ipv4Number, std::vector<int>> OpenPorts() && {
    const Clock::time_point end = Clock::now() + kPatience;
    while (!underWay_.empty() && AwaitSome(end)) continue;
    for (auto& [address, ports] : open_) std::sort(ports.begin(), ports.end());
    return std::move(open_);
  }

 private:
  void Begin(Ipv4Number address, int port) {
    const sockaddr_in place = SocketAddress(address, port);
    Attempt attempt{address, port, {}};
    const auto known = BeginConnecting(reinterpret_cast<const sockaddr&>(place), sizeof place, attempt.connection);
    if (!known) underWay_.push_back(std::move(attempt));
    if (known == Outcome::kOk) open_[address].push_back(port);
  }

  /// Takes the attempts that have ended; false when the time is over.
  bool AwaitSome(Clock::time_point end) {
    std::vector<pollfd> waiting;
    for (const Attempt& attempt : underWay_) waiting.push_back({attempt.connection.Get(), POLLOUT, 0});
    if (!WaitForAny(waiting, end)) return false;
    std::vector<Attempt> left;
    for (std::size_t i = 0; i < waiting.size(); ++i) {
      Attempt& attempt = underWay_[i];
      if (waiting[i].revents == 0) {
        left.push_back(std::move(attempt));
      } else if (EndOfConnecting(attempt.connection) == Outcome::kOk) {
        open_[attempt.address].push_back(attempt.port);
      }
    }
    underWay_ = std::move(left);
    return true;
  }

  std::vector<Attempt> underWay_;
  std::map<Ipv4Number, std::vector<int>> open_;
};

Outcome KnockAt(const KnockPlace& place) {
  FileDescriptor connection;
  return ConnectTo(place.host, place.port, Clock::now() + kPatienceWithEach, connection);
}

}  // namespace

sockaddr_in SocketAddress(Ipv4Number address, int port) {
  sockaddr_in place{};
  place.sin_family = AF_INET;
  place.sin_addr.s_addr = htonl(address);
  place.sin_port = htons(static_cast<std::uint16_t>(port));
  return place;
}

void Knock(std::span<const Ipv4Number> addresses, std::span<const int> ports, const OnOpenPorts& onOpenPorts) {
  while (!addresses.empty()) {
    const std::size_t count = std::min(addresses.size(), kAtOnce);
    for (const auto& [address, open] : Group(addresses.first(count), ports).OpenPorts()) {
      if (!onOpenPorts(address, open)) return;
    }
    addresses = addresses.subspan(count);
  }
}

std::vector<Outcome> KnockAtEach(std::span<const KnockPlace> places) {
  std::vector<Outcome> outcomes(places.size());
  std::atomic<std::size_t> next{0};
  const auto knockInTurn = [&] {
    for (std::size_t i = next++; i < places.size(); i = next++) outcomes[i] = KnockAt(places[i]);
  };
  std::vector<std::jthread> threads;
  try {
    while (threads.size() + 1 < std::min(places.size(), kMostThreads)) threads.emplace_back(knockInTurn);
  } catch (const std::system_error&) {
    // no further thread to be had: those that there are do it
  }
  knockInTurn();
  threads.clear();  // waits for them
  return outcomes;
}

}  // namespace recorder
