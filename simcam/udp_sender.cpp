#include "simcam/udp_sender.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <array>
#include <bit>
#include <cerrno>
#include <system_error>
#include <utility>

namespace simcam {
namespace {

constexpr std::uint32_t kNeighbour = INADDR_LOOPBACK + 1;

sockaddr_in At(std::uint32_t host, int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(host);
  address.sin_port = htons(static_cast<in_port_t>(port));
  return address;
}

Socket Bind(std::uint32_t host) {
  Socket socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  const sockaddr_in address = At(host, 0);
  if (bind(socket.Descriptor(), std::bit_cast<const sockaddr*>(&address), sizeof address) != 0) {
    throw std::system_error(errno, std::generic_category(), "UDP");
  }
  return socket;
}

/// What is lost on the way is nobody's concern here.
void SendTo(const Socket& socket, int port, const std::string& packet) {
  const sockaddr_in client = At(INADDR_LOOPBACK, port);
  static_cast<void>(sendto(socket.Descriptor(), packet.data(), packet.size(), 0,
                           std::bit_cast<const sockaddr*>(&client), sizeof client));
}

std::optional<std::string> ReceiveAt(const Socket& socket) {
  std::array<char, 2048> bytes{};
  const ssize_t size = recv(socket.Descriptor(), bytes.data(), bytes.size(), MSG_DONTWAIT);
  return size > 0 ? std::optional(std::string(bytes.data(), static_cast<size_t>(size))) : std::nullopt;
}

}  // namespace

UdpSender::UdpSender(int clientPort, Fault fault)
    : clientPort_(clientPort),
      fault_(fault),
      rtp_(Bind(INADDR_LOOPBACK)),
      rtcp_(Bind(INADDR_LOOPBACK)),
      elsewhere_(Bind(fault == Fault::kUdpOtherHost ? kNeighbour : INADDR_LOOPBACK)) {}

Granted UdpSender::Grant() const {
  const std::string usual =
      "RTP/AVP;unicast;client_port=" + std::to_string(clientPort_) + "-" + std::to_string(clientPort_ + 1);
  const std::string ports = ";server_port=" + std::to_string(rtp_.Port()) + "-" + std::to_string(rtcp_.Port());
  switch (fault_) {
    case Fault::kUdpMulticast:
      return {200, "RTP/AVP;multicast;destination=239.1.2.3;port=5000-5001;ttl=1"};
    case Fault::kUdpVague:
      return {200, "RTP/AVP/UDP;unicast;client_port=8000-8001;source=192.0.2.1;server_port=0-1;ssrc=1"};
    case Fault::kUdpOtherHost:
      return {200, usual + ";source=127.0.0.2;server_port=" + std::to_string(elsewhere_.Port())};
    default:
      return {200, usual + ports + ";ssrc=51AC0DE5"};
  }
}

void UdpSender::SendUnit(const std::vector<std::string>& packets) {
  for (const std::string& packet : packets) Send(packet);
}

/// Out of order: each second packet goes behind the one that follows it, which goes twice at times.
void UdpSender::Send(const std::string& packet) {
  if (!IsLetThrough()) return;
  const bool isElsewhere = fault_ == Fault::kUdpOtherHost || fault_ == Fault::kUdpOtherPort;
  const Socket& socket = isElsewhere ? elsewhere_ : rtp_;
  const bool isHeld = fault_ == Fault::kUdpDisorder && sent_++ % 2 == 1;
  if (isHeld) {
    held_ = packet;
    return;
  }
  SendTo(socket, clientPort_, packet);
  if (held_.empty()) return;
  SendTo(socket, clientPort_, std::exchange(held_, {}));
  if (sent_ % 5 == 0) SendTo(socket, clientPort_, packet);
}

void UdpSender::SendReport(const std::string& report) const {
  if (fault_ != Fault::kUdpSilent) SendTo(rtcp_, clientPort_ + 1, report);
}

/// False where a firewall would keep the packets from the client.
bool UdpSender::IsLetThrough() {
  hasHeard_ = hasHeard_ || ReceiveAt(rtp_);
  return fault_ != Fault::kUdpSilent && (hasHeard_ || fault_ != Fault::kUdpFirewall);
}

std::optional<std::string> UdpSender::Receive() const { return ReceiveAt(rtcp_); }

}  // namespace simcam
