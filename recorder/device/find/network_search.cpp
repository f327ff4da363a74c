#include "recorder/device/find/network_search.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>
#include <random>
#include <system_error>
#include <utility>

#include "recorder/device/asked/onvif/discovery.h"
#include "recorder/device/asked/onvif/discovery_answers.h"
#include "recorder/device/find/mdns.h"
#include "recorder/utility/address_policy.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/log.h"
#include "recorder/utility/wait.h"

namespace recorder::find {
namespace {

constexpr auto kRepeat = std::chrono::milliseconds{250};

sockaddr_in GroupAt(const char* address, std::uint16_t port) {
  sockaddr_in group{};
  group.sin_family = AF_INET;
  group.sin_port = htons(port);
  inet_pton(AF_INET, address, &group.sin_addr);
  return group;
}

/// None, and logged, where that fails.
FileDescriptor OpenSocket(const OwnNetwork& network) {
  FileDescriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  sockaddr_in local{};
  local.sin_family = AF_INET;
  local.sin_addr = network.address;
  ip_mreqn from{};
  from.imr_address = network.address;
  from.imr_ifindex = network.interfaceIndex;
  const bool isOpen = socket && setsockopt(socket.Get(), IPPROTO_IP, IP_MULTICAST_IF, &from, sizeof from) == 0 &&
                      bind(socket.Get(), reinterpret_cast<const sockaddr*>(&local), sizeof local) == 0;
  if (isOpen) return socket;
  LogFailure("Network " + NameOf(network) + " is not searched: " + std::generic_category().message(errno));
  return FileDescriptor();
}

HeardDevice HeardFrom(onvif::FoundCamera camera) {
  HeardDevice heard{.by = HeardBy::kOnvif, .address = std::move(camera.host), .port = camera.port};
  heard.name = std::move(camera.name);
  heard.model = std::move(camera.hardware);
  heard.endpoint = std::move(camera.endpoint);
  return heard;
}

}  // namespace

NetworkSearch::NetworkSearch(const std::vector<OwnNetwork>& networks)
    : probeId_(onvif::MakeMessageId()),
      mdnsId_(static_cast<std::uint16_t>(std::random_device()())),
      buffer_(kLargestDatagram) {
  questions_.push_back({GroupAt(onvif::kDiscoveryGroup, onvif::kDiscoveryPort), onvif::MakeProbe(probeId_)});
  for (const std::string_view service : MdnsServices()) {
    questions_.push_back({GroupAt(kMdnsGroup, kMdnsPort), MdnsQuestion(mdnsId_, service)});
  }
  for (const OwnNetwork& network : networks) {
    if (FileDescriptor socket = OpenSocket(network)) sockets_.push_back(std::move(socket));
  }
}

void NetworkSearch::Run(std::chrono::milliseconds duration, const OnHeard& onHeard) {
  const Clock::time_point end = Clock::now() + duration;
  Send();
  if (!ListenUntil(std::min(end, Clock::now() + kRepeat), onHeard)) return;
  Send();
  ListenUntil(end, onHeard);
}

void NetworkSearch::Send() const {
  int error = EADDRNOTAVAIL;  // of no socket at all
  bool isSent = false;
  for (const FileDescriptor& socket : sockets_) {
    for (const auto& [group, datagram] : questions_) {
      const auto* to = reinterpret_cast<const sockaddr*>(&group);
      const bool isThisSent = sendto(socket.Get(), datagram.data(), datagram.size(), 0, to, sizeof group) >= 0;
      if (!isThisSent) error = errno;
      isSent = isSent || isThisSent;
    }
  }
  if (!isSent) throw std::system_error(error, std::generic_category(), "no question could be sent");
}

/// False when no more is wanted.
bool NetworkSearch::ListenUntil(Clock::time_point end, const OnHeard& onHeard) {
  std::vector<pollfd> waiting;
  for (const FileDescriptor& socket : sockets_) waiting.push_back({socket.Get(), POLLIN, 0});
  while (WaitForAny(waiting, end)) {
    for (const pollfd& entry : waiting) {
      if (entry.revents != 0 && !Receive(entry.fd, onHeard)) return false;
    }
  }
  return true;
}

bool NetworkSearch::Receive(int socket, const OnHeard& onHeard) {
  sockaddr_in from{};
  socklen_t size = sizeof from;
  const ssize_t length = recvfrom(socket, buffer_.data(), buffer_.size(), 0, reinterpret_cast<sockaddr*>(&from), &size);
  if (length <= 0 || !MayConnectTo(reinterpret_cast<const sockaddr&>(from))) return true;
  const auto devices = Read({buffer_.data(), static_cast<std::size_t>(length)}, from);
  return std::ranges::all_of(devices, onHeard);
}

std::vector<HeardDevice> NetworkSearch::Read(std::string_view datagram, const sockaddr_in& from) const {
  std::array<char, INET_ADDRSTRLEN> sender{};
  inet_ntop(AF_INET, &from.sin_addr, sender.data(), sender.size());
  std::vector<HeardDevice> devices;
  if (ntohs(from.sin_port) == kMdnsPort) {
    if (auto device = ReadMdnsAnswer(datagram, mdnsId_, sender.data())) devices.push_back(std::move(*device));
    return devices;
  }
  for (onvif::FoundCamera& camera : onvif::ReadProbeMatches(datagram, probeId_, sender.data())) {
    devices.push_back(HeardFrom(std::move(camera)));
  }
  return devices;
}

}  // namespace recorder::find
