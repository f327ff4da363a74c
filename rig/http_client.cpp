#include "rig/http_client.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <strings.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <iterator>

namespace rig {

namespace {

constexpr std::chrono::seconds kSilenceLimit{90};
constexpr char kLineEnd[] = "\r\n";
constexpr char kHeaderEnd[] = "\r\n\r\n";

}  // namespace

Connection::Connection(int port, std::chrono::seconds silenceLimit, const std::string& host)
    : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = inet_addr(host.c_str());
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  const timeval limit{.tv_sec = silenceLimit.count(), .tv_usec = 0};
  setsockopt(Descriptor(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
  setsockopt(Descriptor(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof(limit));
  if (connect(Descriptor(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
    throw NoAnswer("no connection");
  }
}

Connection::Connection(const recorder::FileDescriptor& listener)
    : socket_(accept4(listener.Get(), nullptr, nullptr, SOCK_CLOEXEC)) {}

bool Connection::Send(std::string_view bytes) const {
  for (std::size_t done = 0; done < bytes.size();) {
    const ssize_t sent = send(Descriptor(), bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
    if (sent <= 0) return false;
    done += static_cast<std::size_t>(sent);
  }
  return true;
}

bool Connection::Receive(std::string& bytes) const {
  std::array<char, 65536> buffer;
  const ssize_t got = recv(Descriptor(), buffer.data(), buffer.size(), 0);
  if (got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) throw NoAnswer("silence");
  if (got <= 0) return false;
  bytes.append(buffer.data(), static_cast<std::size_t>(got));
  return true;
}

std::string Connection::ReceiveUntil(std::string_view text) const {
  std::string bytes;
  while (bytes.find(text) == std::string::npos && Receive(bytes)) continue;
  return bytes;
}

Connection::Idle Connection::State() const {
  pollfd entry = {.fd = Descriptor(), .events = POLLIN, .revents = 0};
  if (poll(&entry, 1, 0) == 0) return Idle::kQuiet;
  char next = 0;
  return recv(Descriptor(), &next, 1, MSG_PEEK | MSG_DONTWAIT) == 1 ? Idle::kTalks : Idle::kEnded;
}

std::string HeaderOf(std::string_view message, const std::string& name) {
  for (std::size_t at = message.find(kLineEnd); at != std::string::npos;) {
    const std::size_t begin = at + std::size(kLineEnd) - 1;
    at = message.find(kLineEnd, begin);
    const std::string_view line = message.substr(begin, at - begin);
    if (line.empty()) return "";
    if (line.size() <= name.size() || line[name.size()] != ':') continue;
    if (strncasecmp(line.data(), name.data(), name.size()) != 0) continue;
    const std::size_t value = line.find_first_not_of(' ', name.size() + 1);
    return value == std::string::npos ? "" : std::string(line.substr(value));
  }
  return "";
}

std::size_t MessageSize(std::string_view bytes) {
  const std::size_t headEnd = bytes.find(kHeaderEnd);
  if (headEnd == std::string::npos) return 0;
  const std::string length = HeaderOf(bytes, "Content-Length");
  const std::size_t size = headEnd + std::size(kHeaderEnd) - 1 + (length.empty() ? 0 : std::stoul(length));
  return size <= bytes.size() ? size : 0;
}

std::string HttpRequest(const std::string& verb, const std::string& path, Headers headers, const std::string& body) {
  headers.emplace("Host", "127.0.0.1");
  if (verb != "GET") {
    headers.emplace("Content-Type", "application/json");
    headers.emplace("Content-Length", std::to_string(body.size()));
  }
  std::string request = verb + " " + path + " HTTP/1.1\r\n";
  for (const auto& [name, value] : headers) request += name + ": " + value + "\r\n";
  return request + "\r\n" + body;
}

Reply HttpClient::Ask(const std::string& request) {
  const bool hasStrayBytes = !IsQuiet();
  if (hasStrayBytes || (connection_ && connection_->State() == Connection::Idle::kEnded)) connection_.reset();
  if (!connection_) connection_.emplace(port_, kSilenceLimit, address_);
  try {
    if (!connection_->Send(request)) throw NoAnswer("the connection ended before the request was sent");
    Reply reply = ReadReply();
    reply.hasStrayBytes |= hasStrayBytes;
    return reply;
  } catch (const NoAnswer&) {
    connection_.reset();
    throw;
  }
}

Reply HttpClient::ReadReply() {
  std::string bytes;
  std::size_t size = 0;
  while ((size = MessageSize(bytes)) == 0) {
    if (!connection_->Receive(bytes)) {
      throw NoAnswer("the connection ended after " + std::to_string(bytes.size()) + " bytes of an answer");
    }
  }
  const bool hasNoBody = bytes.starts_with("HTTP/1.1 304 ");  // RFC 9110, section 15.4.5
  if (!bytes.starts_with("HTTP/1.1 ") || (!hasNoBody && HeaderOf(bytes, "Content-Length").empty())) {
    throw NoAnswer("the answer has no length");
  }
  const std::size_t bodyStart = bytes.find(kHeaderEnd) + std::size(kHeaderEnd) - 1;
  Reply reply;
  reply.head = bytes.substr(0, bodyStart);
  reply.status = std::stoi(reply.head.substr(reply.head.find(' ')));
  reply.contentType = HeaderOf(reply.head, "Content-Type");
  reply.body = bytes.substr(bodyStart, size - bodyStart);
  reply.hasStrayBytes = bytes.size() > size;
  if (HeaderOf(reply.head, "Connection") == "close") connection_.reset();
  return reply;
}

}  // namespace rig
