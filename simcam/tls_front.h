#pragma once

#include <openssl/ssl.h>

#include <functional>
#include <memory>

#include "simcam/socket.h"

namespace simcam {

/// A camera's side of TLS, with a certificate made for the day and signed by itself. Any thread.
class TlsFront {
 public:
  /// Makes the certificate. Throws std::runtime_error.
  TlsFront();

  /// True for a connection whose client begins with TLS. Waits for its first byte.
  static bool IsWanted(const Socket& socket);

  /// Speaks TLS with the client of `socket` until either side ends. What comes is handed to `serve` as a connection
  /// without TLS, on a thread of its own. TLS ends without a goodbye, as many cameras end it.
  void Relay(const Socket& socket, const std::function<void(Socket& plain)>& serve) const;

 private:
  struct FreeContext {
    void operator()(SSL_CTX* context) const noexcept { SSL_CTX_free(context); }
  };

  const std::unique_ptr<SSL_CTX, FreeContext> context_;
};

}  // namespace simcam
