#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "recorder/device/find/find.h"
#include "recorder/device/find/find_json.h"
#include "recorder/device/model/model_files.h"
#include "recorder/utility/address_policy.h"
#include "recorder/utility/handle.h"
#include "recorder/utility/text.h"
#include "tests/fuzz/fuzz.h"

// What a host answers to whoever finds its streams, over real connections: parts of the input, with a line "--" between
// them, one for each time that something is asked, whatever it was. A host that has no more to say hangs up.

namespace recorder {
namespace {

constexpr char kHost[] = "127.83.21.7";  // of the loopback, and nobody else's
constexpr std::string_view kSeparator = "\n--\n";

std::vector<std::string_view> Parts(std::string_view input) {
  std::vector<std::string_view> parts;
  for (;;) {
    const std::size_t end = std::min(input.find(kSeparator), input.size());
    parts.push_back(input.substr(0, end));
    if (end == input.size()) return parts;
    input.remove_prefix(end + kSeparator.size());
  }
}

/// A server at a port of its own, from the constructor to the destructor.
class Host {
 public:
  explicit Host(std::string_view input) : answers_(Parts(input)) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    address.sin_family = AF_INET;
    inet_pton(AF_INET, kHost, &address.sin_addr);
    Require(bind(listener_.Get(), reinterpret_cast<sockaddr*>(&address), size) == 0 &&
            listen(listener_.Get(), 16) == 0);
    getsockname(listener_.Get(), reinterpret_cast<sockaddr*>(&address), &size);
    port_ = ntohs(address.sin_port);
    thread_ = std::jthread([this](const std::stop_token& stop) { Serve(stop); });
  }

  int Port() const { return port_; }

 private:
  static constexpr int kPatience = 10;  // ms, until all connections are closed over which nothing comes

  void Serve(const std::stop_token& stop) {
    while (!stop.stop_requested()) {
      std::vector<pollfd> watched{{listener_.Get(), POLLIN, 0}};
      for (const FileDescriptor& connection : connections_) watched.push_back({connection.Get(), POLLIN, 0});
      if (poll(watched.data(), watched.size(), kPatience) == 0) connections_.clear();
      std::vector<FileDescriptor> open;
      for (std::size_t i = 0; i < connections_.size(); ++i) {
        if (watched[i + 1].revents == 0 || Answer(connections_[i])) open.push_back(std::move(connections_[i]));
      }
      connections_ = std::move(open);
      if (watched.front().revents != 0) connections_.emplace_back(accept(listener_.Get(), nullptr, nullptr));
    }
  }

  bool Answer(const FileDescriptor& connection) {
    std::array<char, 8192> request{};
    if (recv(connection.Get(), request.data(), request.size(), 0) <= 0 || next_ == answers_.size()) return false;
    const std::string_view answer = answers_[next_++];
    return send(connection.Get(), answer.data(), answer.size(), MSG_NOSIGNAL) >= 0;
  }

  const std::vector<std::string_view> answers_;
  std::size_t next_ = 0;
  const FileDescriptor listener_{socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
  int port_ = 0;
  std::vector<FileDescriptor> connections_;
  std::jthread thread_;
};

void OpenHost() {
  AddressPolicy policy;
  policy.allow.push_back(*ParseAddressRange(kHost));
  SetAddressPolicy(policy);
  SetModelFolders({MODELS_FOLDER});
}

void Check(const FindResult& result) {
  Require(result.requests <= kMostFindRequests);
  Require(result.duration <= kLongestFind + std::chrono::seconds(2));
  Require((result.outcome == Outcome::kOk) == !result.streams.empty());
  for (const ListedStream& stream : result.streams) {
    Require(!stream.path.empty() && !HoldsControls(stream.path) && stream.port > 0);
  }
  for (const FoundPort& port : result.ports) Require(!HoldsControls(port.server) && !HoldsControls(port.realm));
  Require(FindJson(kHost, result).isObject());
}

}  // namespace

void RunInput(std::string_view input) {
  static const bool isOpen = (OpenHost(), true);
  Require(isOpen);
  const Host host(input);
  Check(Find({kHost, "admin", "Circle_of-Life", {host.Port()}}, nullptr));
}

}  // namespace recorder
