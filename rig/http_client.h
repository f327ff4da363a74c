#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "recorder/utility/handle.h"

namespace rig {

inline constexpr char kLoopback[] = "127.0.0.1";

/// The connection ended, or was silent too long, before the whole answer was there.
struct NoAnswer : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// A TCP connection at 127.0.0.1, or another loopback address, that ends with this object. Byte by byte where a library
/// would be too polite.
class Connection {
 public:
  /// Throws NoAnswer when nobody listens.
  Connection(int port, std::chrono::seconds silenceLimit, const std::string& host = kLoopback);
  /// Takes the next client of `listener`.
  explicit Connection(const recorder::FileDescriptor& listener);

  /// For poll(2).
  int Descriptor() const { return socket_.Get(); }
  /// False when the other side has ended the connection.
  bool Send(std::string_view bytes) const;
  /// Appends what comes next; false at the end of the connection. Throws NoAnswer after the limit of silence.
  bool Receive(std::string& bytes) const;
  /// What comes until `text` is in it, or the connection ends.
  std::string ReceiveUntil(std::string_view text) const;

  enum class Idle { kQuiet, kEnded, kTalks };
  /// What happened on a connection from which nothing is awaited.
  Idle State() const;

 private:
  recorder::FileDescriptor socket_;
};

/// The value of a header line of a message of HTTP or RTSP; "" when it is not there.
std::string HeaderOf(std::string_view message, const std::string& name);
/// Size of the message at the beginning of `bytes`, its body included, which is as long as Content-Length says; 0 when
/// it is not whole yet.
std::size_t MessageSize(std::string_view bytes);

struct Reply {
  int status = 0;
  std::string head;  ///< status and headers, as they came
  std::string contentType;
  std::string body;
  bool hasStrayBytes = false;  ///< more came than was asked for
};

/// Of a request, by name.
using Headers = std::map<std::string, std::string>;
/// A whole request (RFC 9112), whose body is JSON unless `headers` say otherwise.
std::string HttpRequest(const std::string& verb, const std::string& path, Headers headers,
                        const std::string& body = {});

/// Asks one request after another over one connection that stays open as long as the server wishes, and sees what
/// belongs to no request. One thread.
class HttpClient {
 public:
  explicit HttpClient(int port, std::string address = kLoopback) : port_(port), address_(std::move(address)) {}

  /// Throws NoAnswer. An answer that is cut short is none.
  Reply Ask(const std::string& request);
  /// False when something came that nobody asked for.
  bool IsQuiet() const { return !connection_ || connection_->State() != Connection::Idle::kTalks; }

 private:
  Reply ReadReply();

  const int port_;
  const std::string address_;
  std::optional<Connection> connection_;
};

}  // namespace rig
