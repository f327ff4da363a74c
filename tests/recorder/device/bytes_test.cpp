#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "recorder/net/http/http_client.h"
#include "recorder/net/rtsp/rtsp_client.h"
#include "tests/recorder/listen.h"

// All that a camera sends counts for the request, whatever becomes of it.

namespace recorder {
namespace {

const std::string kMuch(5000, 'x');

/// Answers each request over its one connection by the next answer. Before that to PLAY it sends a large packet over
/// UDP.
class Answers {
 public:
  explicit Answers(std::vector<std::string> answers) {
    thread_ = std::jthread([this, texts = std::move(answers)] {
      const FileDescriptor connection(accept(listening_.first.Get(), nullptr, nullptr));
      char bytes[4096];
      std::string asked;
      for (const std::string& text : texts) {
        asked.append(bytes, static_cast<std::size_t>(recv(connection.Get(), bytes, sizeof bytes, 0)));
        if (asked.find("PLAY ") != std::string::npos) SendPacket(asked.substr(asked.find("client_port=") + 12));
        send(connection.Get(), text.data(), text.size(), MSG_NOSIGNAL);
      }
      while (recv(connection.Get(), bytes, sizeof bytes, 0) > 0) continue;
    });
  }

  CameraAddress Address() const { return {.host = "127.0.0.1", .port = listening_.second, .user = "", .password = ""}; }

 private:
  static void SendPacket(const std::string& port) {
    const FileDescriptor sender(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const sockaddr_in client = {.sin_family = AF_INET,
                                .sin_port = htons(static_cast<in_port_t>(std::stoi(port))),
                                .sin_addr = {htonl(INADDR_LOOPBACK)},
                                .sin_zero = {}};
    const std::string packet = "\x80" + kMuch;
    sendto(sender.Get(), packet.data(), packet.size(), 0, reinterpret_cast<const sockaddr*>(&client), sizeof client);
  }

  const std::pair<FileDescriptor, int> listening_ = Listen();
  std::jthread thread_;
};

class TakeAll : public BodyReader {
  Step Read(std::string_view) override { return Step::kMore; }
};

Outcome Describe(const CameraAddress& camera) {
  return RtspClient(camera, "/", RequestScope::Current().Deadline()).Describe();
}

Outcome ReadOverUdp(const CameraAddress& camera) {
  RtspClient client(camera, "/", RequestScope::Current().Deadline());
  for (Outcome (RtspClient::*step)() : {&RtspClient::Describe, &RtspClient::Setup, &RtspClient::Play}) {
    if (const Outcome outcome = (client.*step)(); outcome != Outcome::kOk) return outcome;
  }
  InterleavedPacket packet;
  return client.Read(packet);
}

Outcome Get(const CameraAddress& camera) {
  TakeAll all;
  return HttpGet(camera, "/", all);
}

const struct {
  const char* name;
  Outcome (*ask)(const CameraAddress& camera);
  std::vector<std::string> answers;
  Outcome outcome;  ///< when all may come
} kAnswers[] = {
    {"a message",
     Describe,
     {"RTSP/1.0 404 No\r\nCSeq: 1\r\nContent-Length: 5000\r\n\r\n" + kMuch},
     Outcome::kNoSuchStream},
    {"a packet over UDP",
     ReadOverUdp,
     {"RTSP/1.0 200 OK\r\nContent-Length: 51\r\n\r\nv=0\r\nm=video 0 RTP/AVP 96\r\na=rtpmap:96 H264/90000\r\n",
      "RTSP/1.0 461 No\r\n\r\n", "RTSP/1.0 200 OK\r\nSession: 7\r\n\r\n", "RTSP/1.0 200 OK\r\n\r\n"},
     Outcome::kOk},
    {"a body", Get, {"HTTP/1.1 200 OK\r\nContent-Length: 5000\r\n\r\n" + kMuch}, Outcome::kOk},
    {"a header", Get, {"HTTP/1.1 200 OK\r\nX: " + kMuch + "\r\nContent-Length: 1\r\n\r\nx"}, Outcome::kOk},
    {"a chunk's mark",
     Get,
     {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n1;" + kMuch + "\r\nx\r\n0\r\n\r\n"},
     Outcome::kOk},
};

TEST(BytesTest, AllThatACameraSendsCounts) {
  for (const auto& [name, ask, answers, outcome] : kAnswers) {
    for (const std::uint64_t limit : {std::uint64_t{4000}, kCameraBytes}) {
      SCOPED_TRACE(name);
      const bool isTooMuch = limit < kMuch.size();
      const Answers camera(answers);
      RequestScope scope(std::chrono::seconds(10), limit);
      EXPECT_EQ(ask(camera.Address()), isTooMuch ? Outcome::kNotUnderstood : outcome);
      EXPECT_EQ(scope.Refusal("elsewhere", 80, "", "") == Outcome::kNotUnderstood, isTooMuch);
    }
  }
}

}  // namespace
}  // namespace recorder
