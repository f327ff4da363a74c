#pragma once

#include <atomic>
#include <chrono>
#include <string>
#include <string_view>

namespace simcam {

/// A TCP socket's owner. Shutdown() may be called from another thread than the one that reads and writes; that one then
/// sees an end or a failure.
class Socket {
 public:
  Socket() = default;
  explicit Socket(int descriptor) : descriptor_(descriptor) {}
  Socket(Socket&& other) noexcept : descriptor_(other.Release()) {}
  Socket& operator=(Socket&& other) noexcept;
  ~Socket();

  /// Binds the IPv4 address `host` and `port` (0: any free one). Throws std::system_error.
  static Socket Bind(const std::string& host, int port);

  void Listen() const;
  [[nodiscard]] int Port() const;
  /// Waits for the next connection; an empty socket once closed.
  [[nodiscard]] Socket Accept() const;

  [[nodiscard]] int Descriptor() const { return descriptor_; }
  [[nodiscard]] bool IsOpen() const { return descriptor_ >= 0; }

  /// Sends all; false when the connection is gone.
  [[nodiscard]] bool Send(std::string_view bytes) const;
  /// Sends a byte a second; false when the connection is gone.
  [[nodiscard]] bool Drip(std::string_view bytes) const;

  /// True while neither side has ended the connection.
  [[nodiscard]] bool IsEstablished() const;

  /// True when Receive would not wait, within `limit`.
  [[nodiscard]] bool WaitReadable(std::chrono::milliseconds limit) const;
  /// Appends what has come, waiting for the first byte; false at the end of the connection.
  [[nodiscard]] bool Receive(std::string& buffer) const;

  /// Ends the connection in both directions; the descriptor lives on until destruction.
  void Shutdown() const;
  /// Keeps what is sent from now on, if it fits into one segment, until the connection's end leaves with it.
  void SendAtEnd() const;
  /// Ends the connection at once with a reset instead of an orderly end (RST, RFC 9293).
  void Reset() const;
  /// Gives the descriptor away.
  int Release();

 private:
  std::atomic<int> descriptor_ = -1;
};

/// The same for any descriptor of a TCP connection; false for one that is none.
bool IsEstablished(int descriptor);

}  // namespace simcam
