#include "rig/http_client.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <strings.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <sstream>

namespace bench {

namespace {

constexpr std::chrono::seconds kSilenceLimit{90};
constexpr char kHeaderEnd[] = "\r\n\r\n";

/// Value of a header line; "" when there is no such line.
std::string HeaderOf(const std::string& head, const std::string& name) {
  std::istringstream lines(head);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t colon = line.find(':');
    if (colon == std::string::npos || strcasecmp(line.substr(0, colon).c_str(), name.c_str()) != 0) continue;
    const std::size_t first = line.find_first_not_of(' ', colon + 1);
    return first == std::string::npos ? "" : line.substr(first, line.find_last_not_of(" \r") - first + 1);
  }
  return "";
}

}  // namespace

Connection::Connection(int port, std::chrono::seconds silenceLimit)
    : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
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

bool Connection::Send(const std::string& bytes) const {
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

Connection::Idle Connection::State() const {
  pollfd entry = {.fd = Descriptor(), .events = POLLIN, .revents = 0};
  if (poll(&entry, 1, 0) == 0) return Idle::kQuiet;
  char next = 0;
  return recv(Descriptor(), &next, 1, MSG_PEEK | MSG_DONTWAIT) == 1 ? Idle::kTalks : Idle::kEnded;
}

std::string HttpRequest(const std::string& verb, const std::string& path, const std::string& login,
                        const std::string& body) {
  std::string request = verb + " " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\nAuthorization: " + login + "\r\n";
  if (verb != "GET") {
    request += "Content-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) + "\r\n";
  }
  return request + "\r\n" + body;
}

Reply HttpClient::Ask(const std::string& request) {
  const bool hasStrayBytes = !IsQuiet();
  if (hasStrayBytes || (connection_ && connection_->State() == Connection::Idle::kEnded)) connection_.reset();
  if (!connection_) connection_.emplace(port_, kSilenceLimit);
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
  std::size_t headEnd = std::string::npos;
  while ((headEnd = bytes.find(kHeaderEnd)) == std::string::npos) {
    if (!connection_->Receive(bytes)) throw NoAnswer("the connection ended before the answer's header");
  }
  const std::string head = bytes.substr(0, headEnd);
  const std::string length = HeaderOf(head, "Content-Length");
  if (length.empty() || !head.starts_with("HTTP/1.1 ")) throw NoAnswer("the answer has no length");

  Reply reply;
  reply.status = std::stoi(head.substr(head.find(' ')));
  reply.contentType = HeaderOf(head, "Content-Type");
  reply.body = bytes.substr(headEnd + sizeof(kHeaderEnd) - 1);
  const std::size_t size = std::stoul(length);
  while (reply.body.size() < size) {
    if (!connection_->Receive(reply.body)) {
      throw NoAnswer("the connection ended after " + std::to_string(reply.body.size()) + " of " + length + " bytes");
    }
  }
  reply.hasStrayBytes = reply.body.size() > size;
  reply.body.resize(size);
  if (HeaderOf(head, "Connection") == "close") connection_.reset();
  return reply;
}

}  // namespace bench
