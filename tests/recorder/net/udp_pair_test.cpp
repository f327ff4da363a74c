#include "recorder/net/udp_pair.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <tuple>

namespace recorder {
namespace {

sockaddr_in6 At(const char* host, int port) {
  sockaddr_in6 address{};
  address.sin6_family = AF_INET6;
  address.sin6_port = htons(static_cast<in_port_t>(port));
  inet_pton(AF_INET6, host, &address.sin6_addr);
  return address;
}

/// A socket at a free port of `host`.
struct Bound {
  Bound(const char* host, int type) : descriptor(socket(AF_INET6, type | SOCK_CLOEXEC, 0)), address(At(host, 0)) {
    socklen_t size = sizeof address;
    std::ignore = bind(descriptor.Get(), reinterpret_cast<sockaddr*>(&address), size);
    getsockname(descriptor.Get(), reinterpret_cast<sockaddr*>(&address), &size);
  }
  void Send(const std::string& text, int port) const {
    const sockaddr_in6 to = At("::ffff:127.0.0.1", port);
    sendto(descriptor.Get(), text.data(), text.size(), 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
  }
  FileDescriptor descriptor;
  sockaddr_in6 address;
};

TEST(UdpPairTest, TakesWhatTheCameraSendsFromItsPortsAlone) {
  constexpr char kHere[] = "::ffff:127.0.0.1";
  const Bound listener(kHere, SOCK_STREAM);
  if (!listener.descriptor) GTEST_SKIP() << "this machine has no IPv6";
  listen(listener.descriptor.Get(), 1);
  const FileDescriptor connection(socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0));
  ASSERT_EQ(connect(connection.Get(), reinterpret_cast<const sockaddr*>(&listener.address), sizeof(sockaddr_in6)), 0);
  auto pair = UdpPair::OpenBeside(connection.Get());
  ASSERT_TRUE(pair);
  EXPECT_EQ(pair->RtpPort() % 2, 0);
  const Bound camera(kHere, SOCK_DGRAM);
  const Bound itsOther(kHere, SOCK_DGRAM);
  const Bound stranger("::ffff:127.0.0.2", SOCK_DGRAM);
  const auto send = [&](int port) {
    stranger.Send("stranger ", port);
    camera.Send("camera ", port);
    itsOther.Send("other ", port);
  };
  const auto taken = [&] {
    std::string all;
    for (int i = 0; i < 6; ++i) {
      EXPECT_FALSE(pair->Wait(connection.Get(), Clock::now() + std::chrono::milliseconds(50)))
          << "nothing to read there";
      const auto datagram = pair->Receive();
      if (datagram)
        all += (datagram->isControl ? "RTCP " : "") + std::string(datagram->bytes.begin(), datagram->bytes.end());
    }
    return all;
  };
  send(pair->RtpPort());
  pair->Expect(ntohs(camera.address.sin6_port), 0);
  send(pair->RtpPort());
  EXPECT_EQ(taken(), "camera camera ") << "what came too early is judged, too";
  const sockaddr_in6 next = At(kHere, ntohs(camera.address.sin6_port) + 1);
  const FileDescriptor control(socket(AF_INET6, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  if (bind(control.Get(), reinterpret_cast<const sockaddr*>(&next), sizeof next) == 0) {
    pair->SendRtcp(std::array<std::uint8_t, 3>{});
    std::array<char, 9> space{};
    EXPECT_EQ(recv(control.Get(), space.data(), space.size(), MSG_DONTWAIT), 3) << "the next port, by custom";
  }
  send(pair->RtpPort() + 1);
  EXPECT_EQ(taken(), "RTCP camera ") << "the first that the camera uses, where none is named";
}

}  // namespace
}  // namespace recorder
