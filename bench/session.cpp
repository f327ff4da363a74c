#include "bench/session.h"

#include <chrono>
#include <stdexcept>

#include "rig/http_client.h"

namespace bench {

using namespace rig;

namespace {

constexpr std::chrono::seconds kSilenceLimit{10};

/// Without its parameters.
std::string IdOf(const std::string& message) {
  const std::string session = HeaderOf(message, "Session");
  return session.substr(0, session.find(';'));
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

Session SessionOf(const Proxy& camera) {
  Session session;
  std::string received;
  for (const Proxy::Exchange& exchange : camera.Exchanges()) {
    if (exchange.asked.starts_with("TEARDOWN ")) break;
    session.requests.push_back(exchange.asked);
    received = exchange.passed;
  }
  if (session.requests.empty()) throw std::runtime_error("the recorder did not ask the camera");
  session.id = IdOf(session.requests.back());
  session.pictureBytes = FirstPictureSize(received.substr(MessageSize(received)));
  return session;
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
    while (MessageSize(received) == 0) {
      if (!camera.Receive(received)) throw NoAnswer("the camera ended the session");
    }
    id = IdOf(received);
  }
  for (const std::size_t size = MessageSize(received) + session.pictureBytes; received.size() < size;) {
    if (!camera.Receive(received)) throw NoAnswer("the camera ended the stream");
  }
}

}  // namespace bench
