#include "recorder/device/asked/onvif/discovery.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <map>
#include <random>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include "recorder/utility/clock.h"
#include "recorder/utility/handle.h"
#include "recorder/utility/interfaces.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"

namespace recorder::onvif {
namespace {

constexpr char kGroup[] = "239.255.255.250";
constexpr std::uint16_t kPort = 3702;
constexpr auto kRepeat = std::chrono::milliseconds{250};  // datagrams get lost: each probe is sent twice

/// A fresh "urn:uuid:..." (RFC 4122, version 4).
std::string MakeMessageId() {
  constexpr std::string_view kHex = "0123456789abcdef";
  std::random_device random;
  std::string id = "urn:uuid:";
  for (const char c : std::string_view("xxxxxxxx-xxxx-4xxx-8xxx-xxxxxxxxxxxx")) {
    id += c == 'x' ? kHex[random() & 0x0FU] : c;
  }
  return id;
}

std::string MakeProbe(const std::string& messageId) {
  return R"(<?xml version="1.0" encoding="UTF-8"?>)"
         R"(<s:Envelope xmlns:s="http://www.w3.org/2003/05/soap-envelope")"
         R"( xmlns:a="http://schemas.xmlsoap.org/ws/2004/08/addressing")"
         R"( xmlns:d="http://schemas.xmlsoap.org/ws/2005/04/discovery">)"
         R"(<s:Header><a:Action s:mustUnderstand="1">http://schemas.xmlsoap.org/ws/2005/04/discovery/Probe</a:Action>)"
         "<a:MessageID>" +
         messageId +
         "</a:MessageID>"
         "<a:ReplyTo><a:Address>http://schemas.xmlsoap.org/ws/2004/08/addressing/role/anonymous</a:Address></a:ReplyTo>"
         R"(<a:To s:mustUnderstand="1">urn:schemas-xmlsoap-org:ws:2005:04:discovery</a:To></s:Header>)"
         R"(<s:Body><d:Probe><d:Types xmlns:dn="http://www.onvif.org/ver10/network/wsdl">dn:NetworkVideoTransmitter)"
         "</d:Types></d:Probe></s:Body></s:Envelope>";
}

/// An IPv4 address of ours, and the interface that has it.
struct OwnAddress {
  in_addr address{};
  int interface = 0;
};

std::vector<OwnAddress> OwnAddresses(const std::optional<std::string>& wanted) {
  const InterfaceList interfaces = ListInterfaces();
  if (!interfaces) throw std::system_error(errno, std::generic_category(), "network interfaces");
  std::vector<OwnAddress> addresses;
  for (const ifaddrs* entry = interfaces.get(); entry != nullptr; entry = entry->ifa_next) {
    if (entry->ifa_addr == nullptr || entry->ifa_addr->sa_family != AF_INET) continue;
    constexpr unsigned int kUsable = IFF_UP | IFF_MULTICAST;
    const bool isUsable = (entry->ifa_flags & kUsable) == kUsable;
    const bool isWanted = wanted ? *wanted == entry->ifa_name : (entry->ifa_flags & IFF_LOOPBACK) == 0;
    if (!isUsable || !isWanted) continue;
    const auto* address = reinterpret_cast<const sockaddr_in*>(entry->ifa_addr);
    addresses.push_back({address->sin_addr, static_cast<int>(if_nametoindex(entry->ifa_name))});
  }
  return addresses;
}

/// Why there is nothing to ask from.
std::string NoAddress(const std::optional<std::string>& wanted) {
  if (!wanted) return "no network interface is up with an IPv4 address and multicasts";
  const std::string name = EscapeControls(*wanted);
  if (if_nametoindex(wanted->c_str()) == 0) return "there is no network interface " + name;
  return "the network interface " + name + " is not up, or has no IPv4 address or no multicasts";
}

FileDescriptor OpenSocket(const OwnAddress& own) {
  FileDescriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  sockaddr_in local{};
  local.sin_family = AF_INET;
  local.sin_addr = own.address;
  ip_mreqn from{};
  from.imr_address = own.address;
  from.imr_ifindex = own.interface;
  const bool isOpen = socket && setsockopt(socket.Get(), IPPROTO_IP, IP_MULTICAST_IF, &from, sizeof from) == 0 &&
                      bind(socket.Get(), reinterpret_cast<const sockaddr*>(&local), sizeof local) == 0;
  if (!isOpen) throw std::system_error(errno, std::generic_category(), "socket for a probe");
  return socket;
}

bool SendProbe(const FileDescriptor& socket, const std::string& probe) {
  sockaddr_in group{};
  group.sin_family = AF_INET;
  group.sin_port = htons(kPort);
  inet_pton(AF_INET, kGroup, &group.sin_addr);
  return sendto(socket.Get(), probe.data(), probe.size(), 0, reinterpret_cast<const sockaddr*>(&group), sizeof group) >=
         0;
}

/// One search: a socket an address of ours, one probe, and what has answered.
class Search {
 public:
  explicit Search(const std::vector<OwnAddress>& addresses) {
    for (const OwnAddress& address : addresses) sockets_.push_back(OpenSocket(address));
  }

  /// Throws when no socket could send.
  void Send() {
    const std::string probe = MakeProbe(messageId_);
    int error = 0;
    bool isSent = false;
    for (const FileDescriptor& socket : sockets_) {
      if (SendProbe(socket, probe)) {
        isSent = true;
      } else {
        error = errno;
      }
    }
    if (!isSent) throw std::system_error(error, std::generic_category(), "no probe could be sent");
  }

  void CollectUntil(Clock::time_point end) {
    std::vector<pollfd> waiting;
    for (const FileDescriptor& socket : sockets_) waiting.push_back({socket.Get(), POLLIN, 0});
    for (;;) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
      if (left <= 0) return;
      if (poll(waiting.data(), waiting.size(), static_cast<int>(left)) <= 0) continue;
      for (const pollfd& entry : waiting) {
        if (entry.revents != 0) Receive(entry.fd);
      }
    }
  }

  std::vector<FoundCamera> Found() && {
    std::vector<FoundCamera> cameras;
    for (auto& [place, camera] : found_) cameras.push_back(std::move(camera));
    return cameras;
  }

 private:
  void Receive(int socket) {
    sockaddr_in from{};
    socklen_t size = sizeof from;
    const ssize_t length =
        recvfrom(socket, buffer_.data(), buffer_.size(), 0, reinterpret_cast<sockaddr*>(&from), &size);
    if (length <= 0) return;
    std::array<char, INET_ADDRSTRLEN> sender{};
    inet_ntop(AF_INET, &from.sin_addr, sender.data(), sender.size());
    const std::string_view datagram(buffer_.data(), static_cast<std::size_t>(length));
    for (FoundCamera& camera : ReadProbeMatches(datagram, messageId_, sender.data())) {
      if (found_.size() >= kMostFoundCameras) return;
      const int port = camera.port;
      found_.try_emplace({ntohl(from.sin_addr.s_addr), port}, std::move(camera));
    }
  }

  std::string messageId_ = MakeMessageId();
  std::vector<FileDescriptor> sockets_;
  std::vector<char> buffer_ = std::vector<char>(kLargestDatagram);
  std::map<std::pair<std::uint32_t, int>, FoundCamera> found_;  // by address and port
};

}  // namespace

std::vector<FoundCamera> Discover(const std::optional<std::string>& interface, std::chrono::milliseconds duration) {
  const std::vector<OwnAddress> addresses = OwnAddresses(interface);
  if (addresses.empty()) throw std::runtime_error(NoAddress(interface));
  const Clock::time_point end = Clock::now() + duration;
  Search search(addresses);
  search.Send();
  search.CollectUntil(std::min(end, Clock::now() + kRepeat));
  search.Send();
  search.CollectUntil(end);
  return std::move(search).Found();
}

}  // namespace recorder::onvif
