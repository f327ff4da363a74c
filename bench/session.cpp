#include "bench/session.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <stdexcept>

#include "rig/http_client.h"

namespace bench {

namespace {

constexpr std::chrono::seconds kSilenceLimit{10};
constexpr char kHeaderEnd[] = "\r\n\r\n";

/// Value of a header line that is spelled in the usual way; "" when there is none.
std::string HeaderOf(const std::string& message, const std::string& name) {
  const std::size_t line = message.find("\r\n" + name + ": ");
  if (line == std::string::npos) return "";
  const std::size_t begin = line + name.size() + 4;
  return message.substr(begin, message.find_first_of("\r;", begin) - begin);
}

/// Size of the answer at the beginning of `bytes`; 0 when it is not whole yet.
std::size_t AnswerSize(const std::string& bytes) {
  const std::size_t headEnd = bytes.find(kHeaderEnd);
  if (headEnd == std::string::npos) return 0;
  const std::string length = HeaderOf(bytes.substr(0, headEnd + 2), "Content-Length");
  const std::size_t size = headEnd + sizeof(kHeaderEnd) - 1 + (length.empty() ? 0 : std::stoul(length));
  return size <= bytes.size() ? size : 0;
}

/// Size of the frames (RFC 2326 section 10.12) up to the first RTP packet with a marker (RFC 3550 section 5.1), which
/// ends a picture.
std::size_t FirstPictureSize(const std::string& frames) {
  const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(frames.at(at)); };
  constexpr unsigned int kMarker = 0x80;
  for (std::size_t at = 0;;) {
    const bool isLast = byte(at + 1) % 2 == 0 && (byte(at + 5) & kMarker) != 0;
    at += 4 + byte(at + 2) * std::size_t{256} + byte(at + 3);
    if (isLast) return at;
  }
}

}  // namespace

SessionRecorder::SessionRecorder(int cameraPort) : listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (bind(listener_.Get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 ||
      listen(listener_.Get(), 1) != 0) {
    throw std::runtime_error("no listener");
  }
  thread_ = std::jthread([this, cameraPort] { Carry(cameraPort); });
}

int SessionRecorder::Port() const {
  sockaddr_in address = {};
  socklen_t size = sizeof(address);
  getsockname(listener_.Get(), reinterpret_cast<sockaddr*>(&address), &size);
  return ntohs(address.sin_port);
}

void SessionRecorder::Carry(int cameraPort) {
  const Connection client(listener_);
  const Connection camera(cameraPort, kSilenceLimit);
  for (;;) {
    std::array<pollfd, 2> ends = {{{client.Descriptor(), POLLIN, 0}, {camera.Descriptor(), POLLIN, 0}}};
    poll(ends.data(), ends.size(), -1);
    std::string bytes;
    const bool isAsked = ends[0].revents != 0;
    if (!(isAsked ? client : camera).Receive(bytes) || !(isAsked ? camera : client).Send(bytes)) return;
    if (!isAsked) {
      received_ += bytes;
      continue;
    }
    if (bytes.starts_with("TEARDOWN ")) return;
    requests_.push_back(bytes);
    received_.clear();
  }
}

Session SessionRecorder::Finish() {
  thread_.join();
  if (requests_.empty()) throw std::runtime_error("the recorder did not ask the camera");
  return {requests_, HeaderOf(requests_.back(), "Session"), FirstPictureSize(received_.substr(AnswerSize(received_)))};
}

void Replay(const Session& session, int cameraPort) {
  const Connection camera(cameraPort, kSilenceLimit);
  std::string received;
  std::string id;  // the camera gives each session another one
  for (std::string request : session.requests) {
    const std::size_t place = request.find("Session: " + session.id);
    if (place != std::string::npos && !session.id.empty()) {
      request.replace(request.find(session.id, place), session.id.size(), id);
    }
    received.clear();
    camera.Send(request);
    while (AnswerSize(received) == 0) {
      if (!camera.Receive(received)) throw NoAnswer("the camera ended the session");
    }
    id = HeaderOf(received, "Session");
  }
  for (const std::size_t size = AnswerSize(received) + session.pictureBytes; received.size() < size;) {
    if (!camera.Receive(received)) throw NoAnswer("the camera ended the stream");
  }
}

}  // namespace bench
