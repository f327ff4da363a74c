#include "recorder/net/udp_pair.h"

#include <netinet/in.h>
#include <poll.h>

#include <array>
#include <tuple>
#include <utility>

#include "recorder/utility/address_policy.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/wait.h"

namespace recorder {
namespace {

constexpr int kMostTries = 20;           // the neighbour of a free port may be taken
constexpr int kReceiveBuffer = 4 << 20;  // bytes; the system has its own limit. A large key frame comes at once.

sockaddr* Generic(sockaddr_storage& address) { return reinterpret_cast<sockaddr*>(&address); }

/// In network order.
in_port_t& PortOf(sockaddr_storage& address) {
  return address.ss_family == AF_INET6 ? reinterpret_cast<sockaddr_in6&>(address).sin6_port
                                       : reinterpret_cast<sockaddr_in&>(address).sin_port;
}

sockaddr_storage AddressOfEnd(int descriptor, int (*end)(int, sockaddr*, socklen_t*)) {
  sockaddr_storage address{};
  socklen_t size = sizeof address;
  std::ignore = end(descriptor, Generic(address), &size);
  return address;
}

int PortOfSocket(int descriptor) {
  sockaddr_storage address = AddressOfEnd(descriptor, getsockname);
  return ntohs(PortOf(address));
}

/// A socket at `local` with this port, 0 for any; none when it is taken.
FileDescriptor Bind(sockaddr_storage local, int port) {
  FileDescriptor bound(socket(local.ss_family, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  PortOf(local) = htons(static_cast<in_port_t>(port));
  setsockopt(bound.Get(), SOL_SOCKET, SO_RCVBUF, &kReceiveBuffer, sizeof kReceiveBuffer);
  const bool isBound = bound && bind(bound.Get(), Generic(local), sizeof local) == 0;
  return isBound ? std::move(bound) : FileDescriptor();
}

}  // namespace

UdpPair::UdpPair(Port rtp, Port rtcp) : rtp_(std::move(rtp)), rtcp_(std::move(rtcp)), buffer_(kLargestDatagram) {}

std::optional<UdpPair> UdpPair::OpenBeside(int connection) {
  const sockaddr_storage local = AddressOfEnd(connection, getsockname);
  sockaddr_storage camera = AddressOfEnd(connection, getpeername);
  PortOf(camera) = 0;
  for (int i = 0; i < kMostTries; ++i) {
    FileDescriptor one = Bind(local, 0);
    if (!one) return std::nullopt;
    const int port = PortOfSocket(one.Get());
    FileDescriptor other = Bind(local, port ^ 1);
    if (!other) continue;
    if (port % 2 != 0) std::swap(one, other);
    return UdpPair({std::move(one), camera}, {std::move(other), camera});
  }
  return std::nullopt;
}

int UdpPair::RtpPort() const { return PortOfSocket(rtp_.descriptor.Get()); }

void UdpPair::Expect(int rtpPort, int rtcpPort) {
  Expect(rtp_, rtpPort);
  Expect(rtcp_, rtcpPort);
}

/// The system then drops what others send. What came before is judged here.
void UdpPair::Expect(Port& port, int number) {
  if (number == 0) return;
  PortOf(port.camera) = htons(static_cast<in_port_t>(number));
  std::ignore = connect(port.descriptor.Get(), Generic(port.camera), sizeof port.camera);
}

void UdpPair::SendRtcp(std::span<const std::uint8_t> bytes) const {
  sockaddr_storage rtp = rtp_.camera;
  sockaddr_storage rtcp = rtcp_.camera;
  if (PortOf(rtp) == 0 || PortOf(rtcp) != 0) return Send(rtcp_, bytes);
  PortOf(rtcp) = htons(static_cast<in_port_t>(ntohs(PortOf(rtp)) + 1));
  std::ignore = sendto(rtcp_.descriptor.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL, Generic(rtcp), sizeof rtcp);
}

void UdpPair::Send(const Port& port, std::span<const std::uint8_t> bytes) {
  std::ignore = send(port.descriptor.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
}

bool UdpPair::Wait(int connection, Clock::time_point until) const {
  std::array<pollfd, 3> entries = {
      {{connection, POLLIN, 0}, {rtp_.descriptor.Get(), POLLIN, 0}, {rtcp_.descriptor.Get(), POLLIN, 0}}};
  return WaitForAny(entries, until) && entries.front().revents != 0;
}

std::optional<Datagram> UdpPair::Receive() {
  const auto datagram = ReceiveFrom(rtp_, false);
  return datagram ? datagram : ReceiveFrom(rtcp_, true);
}

std::optional<Datagram> UdpPair::ReceiveFrom(Port& port, bool isControl) {
  sockaddr_storage sender{};
  socklen_t size = sizeof sender;
  const ssize_t received = recvfrom(port.descriptor.Get(), buffer_.data(), buffer_.size(), 0, Generic(sender), &size);
  const bool isCamera = received > 0 && AddressOf(*Generic(sender)) == AddressOf(*Generic(port.camera));
  if (!isCamera) return std::nullopt;
  if (PortOf(port.camera) == 0) Expect(port, ntohs(PortOf(sender)));
  if (PortOf(sender) != PortOf(port.camera)) return std::nullopt;
  return Datagram{isControl, std::span(buffer_).first(static_cast<std::size_t>(received))};
}

}  // namespace recorder
