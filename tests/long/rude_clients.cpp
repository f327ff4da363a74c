#include "tests/long/rude_clients.h"

#include <algorithm>
#include <chrono>

#include "rig/recorder.h"

namespace long_tests {

using namespace rig;

namespace {

constexpr std::chrono::seconds kSilenceLimit{60};

int Count(const std::vector<Connection>& connections, bool areEnded) {
  return static_cast<int>(std::count_if(connections.begin(), connections.end(), [&](const Connection& connection) {
    return (connection.State() == Connection::Idle::kEnded) == areEnded;
  }));
}

}  // namespace

DrippingClients::DrippingClients(int port, const Headers& login, int count) {
  const std::string body(1000, ' ');
  const std::string request = HttpRequest("POST", std::string(kApi) + "CameraTest", login, body);
  for (int i = 0; i < count; ++i) {
    const std::size_t sentAtOnce = i % 2 == 0 ? 0 : request.size() - body.size();
    connections_.emplace_back(port, kSilenceLimit).Send(request.substr(0, sentAtOnce));
    rest_.push_back(request.substr(sentAtOnce));
  }
  thread_ = std::thread([this] { Drip(); });
}

DrippingClients::~DrippingClients() {
  {
    const std::lock_guard lock(mutex_);
    isStopped_ = true;
  }
  stopping_.notify_all();
  thread_.join();
}

int DrippingClients::Connected() const { return Count(connections_, false); }

void DrippingClients::Drip() {
  std::unique_lock lock(mutex_);
  for (std::size_t byte = 0; !stopping_.wait_for(lock, std::chrono::seconds(1), [this] { return isStopped_; });
       ++byte) {
    for (std::size_t i = 0; i < connections_.size(); ++i) connections_[i].Send(rest_[i].substr(byte, 1));
  }
}

IdleClients::IdleClients(int port, int count) {
  for (int i = 0; i < count; ++i) connections_.emplace_back(port, kSilenceLimit);
}

int IdleClients::Ended() const { return Count(connections_, true); }

}  // namespace long_tests
