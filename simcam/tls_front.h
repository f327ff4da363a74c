#pragma once

#include <openssl/ssl.h>

#include <atomic>
#include <functional>
#include <list>
#include <memory>
#include <thread>

#include "simcam/socket.h"

namespace simcam {

/// A port of 127.0.0.1 that speaks TLS with a certificate made for the day and signed by itself. What comes is handed
/// to a server as a connection without TLS. It serves from construction to destruction.
class TlsFront {
 public:
  /// `serve` talks to one client until either side ends; it is called on a thread of its own for each. Throws
  /// std::runtime_error.
  explicit TlsFront(std::function<void(const Socket& plain)> serve);
  ~TlsFront();
  TlsFront(const TlsFront&) = delete;
  TlsFront& operator=(const TlsFront&) = delete;

  [[nodiscard]] int Port() const { return listener_.Port(); }

 private:
  struct FreeContext {
    void operator()(SSL_CTX* context) const noexcept { SSL_CTX_free(context); }
  };
  struct Connection {
    Socket socket;
    std::atomic<bool> over = false;
    std::jthread thread;
  };

  void AcceptAll();
  void Relay(const Socket& socket) const;

  const std::function<void(const Socket&)> serve_;
  const std::unique_ptr<SSL_CTX, FreeContext> context_;
  const Socket listener_;
  std::list<Connection> connections_;  ///< the acceptor's, and the destructor's after it
  std::jthread acceptor_;
};

}  // namespace simcam
