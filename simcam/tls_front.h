#pragma once

#include <openssl/ssl.h>

#include <functional>
#include <memory>

#include "simcam/acceptor.h"
#include "simcam/socket.h"

namespace simcam {

/// A port of 127.0.0.1 that speaks TLS with a certificate made for the day and signed by itself. What comes is handed
/// to a server as a connection without TLS. It serves from construction to destruction.
class TlsFront {
 public:
  /// `serve` talks to one client until either side ends; it is called on a thread of its own for each. Throws
  /// std::runtime_error.
  explicit TlsFront(std::function<void(const Socket& plain)> serve);

  [[nodiscard]] int Port() const { return listener_.Port(); }

 private:
  struct FreeContext {
    void operator()(SSL_CTX* context) const noexcept { SSL_CTX_free(context); }
  };

  void Relay(const Socket& socket) const;

  const std::function<void(const Socket&)> serve_;
  const std::unique_ptr<SSL_CTX, FreeContext> context_;
  const Socket listener_;
  const Acceptor acceptor_;
};

}  // namespace simcam
