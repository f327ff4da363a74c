#include "tests/recorder/device/scripted_port.h"

#include <sys/socket.h>

#include <array>
#include <cstdlib>
#include <optional>
#include <tuple>
#include <utility>

#include "tests/recorder/listen.h"

namespace recorder {
namespace {

/// What stands between `before` and the next `after`; "" when there is no such place.
std::string Between(const std::string& text, const std::string& before, const char* after) {
  const std::size_t at = text.find(before);
  if (at == std::string::npos) return "";
  const std::size_t begin = at + before.size();
  return text.substr(begin, text.find_first_of(after, begin) - begin);
}

std::string PathOf(const std::string& target) {
  const std::size_t host = target.find("://");
  return host == std::string::npos ? target : target.substr(target.find('/', host + 3));
}

Question Read(const std::string& head, const std::string& body) {
  Question asked{head.substr(0, head.find(' ')), PathOf(Between(head, " ", " "))};
  asked.body = body;
  asked.action = Between(body, "<s:Body><", " ");
  asked.login = Between(head, "\r\nAuthorization: ", " ");
  if (body.find("UsernameToken") != std::string::npos) asked.login = "token";
  return asked;
}

std::string Written(const Answer& answer, const std::string& head) {
  const bool isRtsp = head.find(" RTSP/1.0\r\n") != std::string::npos;
  std::string text = (isRtsp ? "RTSP/1.0 " : "HTTP/1.1 ") + std::to_string(answer.status) + " X\r\n";
  if (isRtsp) text += "CSeq: " + Between(head, "CSeq: ", "\r") + "\r\n";
  if (!answer.challenge.empty()) text += "WWW-Authenticate: " + answer.challenge + "\r\n";
  const bool isPage = answer.body.starts_with("<!DOCTYPE html");
  if (!answer.body.empty()) text += isPage ? "Content-Type: text/html\r\n" : "Content-Type: application/soap+xml\r\n";
  return text + "Content-Length: " + std::to_string(answer.body.size()) + "\r\n\r\n" + answer.body;
}

/// Takes the next `size` bytes of a connection, which `text` may hold in part.
std::optional<std::string> Taken(int connection, std::string& text, const std::function<std::size_t()>& size) {
  std::array<char, 4096> bytes{};
  while (size() > text.size()) {
    const ssize_t got = recv(connection, bytes.data(), bytes.size(), 0);
    if (got <= 0) return std::nullopt;
    text.append(bytes.data(), static_cast<std::size_t>(got));
  }
  std::string taken = text.substr(0, size());
  text.erase(0, taken.size());
  return taken;
}

}  // namespace

ScriptedPort::ScriptedPort(Script script) : script_(std::move(script)) {
  std::tie(socket_, number_) = Listen();
  thread_ = std::jthread([this] { Accept(); });
}

ScriptedPort::~ScriptedPort() { shutdown(socket_.Get(), SHUT_RDWR); }

std::vector<Exchanged> ScriptedPort::Log() const {
  const std::lock_guard lock(mutex_);
  return log_;
}

void ScriptedPort::Accept() {
  for (int connection = 0; (connection = accept(socket_.Get(), nullptr, nullptr)) >= 0;) {
    connections_.emplace_back([this, connection] { Serve(connection); });
  }
}

void ScriptedPort::Serve(int connection) {
  const FileDescriptor closer(connection);
  std::string text;
  for (;;) {
    const auto head = Taken(connection, text, [&] {
      const std::size_t end = text.find("\r\n\r\n");
      return end == std::string::npos ? std::string::npos : end + 4;
    });
    if (!head) return;
    const auto size =
        static_cast<std::size_t>(std::strtol(Between(*head, "Content-Length: ", "\r").c_str(), nullptr, 10));
    const auto body = Taken(connection, text, [&] { return size; });
    const std::string answer = body ? Take(*head, *body) : "";
    if (answer.empty() || send(connection, answer.data(), answer.size(), MSG_NOSIGNAL) < 0) return;
  }
}

std::string ScriptedPort::Take(const std::string& head, const std::string& body) {
  const std::lock_guard lock(mutex_);
  Question asked = Read(head, body);
  asked.number = static_cast<int>(log_.size()) + 1;
  const Answer answer = script_(asked);
  log_.push_back({std::move(asked), answer.status});
  return answer.status == 0 ? "" : Written(answer, head);
}

}  // namespace recorder
