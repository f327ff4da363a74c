#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "recorder/utility/handle.h"

/// Listens on a free port of 127.0.0.1 and gives each connection the next answer (the last one again and again),
/// whatever it asks. Stops with its destruction.
class CannedServer {
 public:
  explicit CannedServer(std::vector<std::string> answers)
      : answers_(std::move(answers)), listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener_.Get(), generic, length) != 0 || listen(listener_.Get(), 8) != 0 ||
        getsockname(listener_.Get(), generic, &length) != 0) {
      throw std::runtime_error("no port to listen on");
    }
    port_ = ntohs(address.sin_port);
    thread_ = std::jthread([this] { Serve(); });
  }
  ~CannedServer() { shutdown(listener_.Get(), SHUT_RDWR); }
  CannedServer(const CannedServer&) = delete;
  CannedServer& operator=(const CannedServer&) = delete;

  int Port() const { return port_; }

  /// Ends the server and returns the requests that came.
  std::vector<std::string> Requests() {
    shutdown(listener_.Get(), SHUT_RDWR);
    if (thread_.joinable()) thread_.join();
    return requests_;
  }

 private:
  void Serve() {
    for (;;) {
      const recorder::FileDescriptor connection(accept(listener_.Get(), nullptr, nullptr));
      if (!connection) return;
      std::string request;
      char bytes[4096];
      while (request.find("\r\n\r\n") == std::string::npos) {
        const ssize_t received = recv(connection.Get(), bytes, sizeof(bytes), 0);
        if (received <= 0) break;
        request.append(bytes, static_cast<std::size_t>(received));
      }
      const std::string& answer = answers_[std::min(requests_.size(), answers_.size() - 1)];
      requests_.push_back(request);
      send(connection.Get(), answer.data(), answer.size(), MSG_NOSIGNAL);
    }
  }

  const std::vector<std::string> answers_;
  const recorder::FileDescriptor listener_;
  int port_ = 0;
  std::vector<std::string> requests_;
  std::jthread thread_;
};

/// The markers of a JPEG of 16 x 8 pixels, with a few bytes for its scan.
inline std::string TinyJpeg() {
  using namespace std::string_literals;
  return "\xFF\xD8"
         "\xFF\xC0\x00\x0B\x08\x00\x08\x00\x10\x01\x01\x11\x00"
         "\xFF\xDA\x00\x08\x01\x01\x00\x00\x3F\x00"
         "abc\xFF\x00\xFF\xD0xyz\xFF\xD9"s;
}
