#pragma once

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>

#include "recorder/utility/handle.h"

namespace bench {

/// The connection ended, or was silent too long, before the whole answer was there.
struct NoAnswer : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// A TCP connection at 127.0.0.1 that ends with this object. Byte by byte where a library would be too polite.
class Connection {
 public:
  /// Throws NoAnswer when nobody listens.
  Connection(int port, std::chrono::seconds silenceLimit);
  /// Takes the next client of `listener`.
  explicit Connection(const recorder::FileDescriptor& listener);

  /// For poll(2).
  int Descriptor() const { return socket_.Get(); }
  /// False when the other side has ended the connection.
  bool Send(const std::string& bytes) const;
  /// Appends what comes next; false at the end of the connection. Throws NoAnswer after the limit of silence.
  bool Receive(std::string& bytes) const;

  enum class Idle { kQuiet, kEnded, kTalks };
  /// What happened on a connection from which nothing is awaited.
  Idle State() const;

 private:
  recorder::FileDescriptor socket_;
};

struct Reply {
  int status = 0;
  std::string contentType;
  std::string body;
  bool hasStrayBytes = false;  ///< more came than was asked for
};

/// A request without a body for GET, with JSON otherwise. `login` is the value of its Authorization header.
std::string HttpRequest(const std::string& verb, const std::string& path, const std::string& login,
                        const std::string& body);

/// Asks one request after another over one connection (RFC 9112) that stays open as long as the server wishes, and sees
/// what belongs to no request. One thread.
class HttpClient {
 public:
  explicit HttpClient(int port) : port_(port) {}

  /// Throws NoAnswer. An answer that is cut short is none.
  Reply Ask(const std::string& request);
  /// False when something came that nobody asked for.
  bool IsQuiet() const { return !connection_ || connection_->State() != Connection::Idle::kTalks; }

 private:
  Reply ReadReply();

  const int port_;
  std::optional<Connection> connection_;
};

}  // namespace bench
