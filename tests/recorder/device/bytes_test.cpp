#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cstdint>
#include <string>
#include <thread>
#include <tuple>

#include "recorder/net/http/http_client.h"
#include "recorder/net/rtsp/rtsp_client.h"

// All that a camera sends counts for the request, whatever becomes of it.

namespace recorder {
namespace {

/// Answers what comes first over its one connection.
class OneAnswer {
 public:
  explicit OneAnswer(std::string answer) : listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = {.sin_family = AF_INET, .sin_port = 0, .sin_addr = {htonl(INADDR_LOOPBACK)}, .sin_zero = {}};
    socklen_t size = sizeof address;
    std::ignore = bind(listener_.Get(), reinterpret_cast<sockaddr*>(&address), size);
    listen(listener_.Get(), 1);
    getsockname(listener_.Get(), reinterpret_cast<sockaddr*>(&address), &size);
    port_ = ntohs(address.sin_port);
    thread_ = std::jthread([this, text = std::move(answer)] {
      const FileDescriptor connection(accept(listener_.Get(), nullptr, nullptr));
      char request[4096];
      recv(connection.Get(), request, sizeof request, 0);
      send(connection.Get(), text.data(), text.size(), MSG_NOSIGNAL);
      while (recv(connection.Get(), request, sizeof request, 0) > 0) continue;
    });
  }

  CameraAddress Address() const { return {.host = "127.0.0.1", .port = port_, .user = "", .password = ""}; }

 private:
  FileDescriptor listener_;
  int port_ = 0;
  std::jthread thread_;
};

class TakeAll : public BodyReader {
  Step Read(std::string_view) override { return Step::kMore; }
};

Outcome Describe(const CameraAddress& camera) {
  return RtspClient(camera, "/", RequestScope::Current().Deadline()).Describe();
}

Outcome Get(const CameraAddress& camera) {
  TakeAll all;
  return HttpGet(camera, "/", all);
}

const std::string kMuch(5000, 'x');

const struct {
  const char* name;
  Outcome (*ask)(const CameraAddress& camera);
  std::string answer;
  Outcome outcome;  ///< when all may come
} kAnswers[] = {
    {"a message", Describe, "RTSP/1.0 404 No\r\nCSeq: 1\r\nContent-Length: 5000\r\n\r\n" + kMuch,
     Outcome::kNoSuchStream},
    {"a body", Get, "HTTP/1.1 200 OK\r\nContent-Length: 5000\r\n\r\n" + kMuch, Outcome::kOk},
    {"a header", Get, "HTTP/1.1 200 OK\r\nX: " + kMuch + "\r\nContent-Length: 1\r\n\r\nx", Outcome::kOk},
    {"a chunk's mark", Get, "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n1;" + kMuch + "\r\nx\r\n0\r\n\r\n",
     Outcome::kOk},
};

TEST(BytesTest, AllThatACameraSendsCounts) {
  for (const auto& [name, ask, answer, outcome] : kAnswers) {
    for (const std::uint64_t limit : {std::uint64_t{4000}, kCameraBytes}) {
      SCOPED_TRACE(name);
      const bool isTooMuch = limit < answer.size();
      const OneAnswer camera(answer);
      RequestScope scope(std::chrono::seconds(10), limit);
      EXPECT_EQ(ask(camera.Address()), isTooMuch ? Outcome::kNotUnderstood : outcome);
      EXPECT_EQ(scope.Refusal("elsewhere", 80, "", "") == Outcome::kNotUnderstood, isTooMuch);
    }
  }
}

}  // namespace
}  // namespace recorder
