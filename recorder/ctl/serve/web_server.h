#pragma once

#include <optional>

#include "recorder/ctl/serve/lighttpd_config.h"
#include "recorder/ctl/serve/served_certificate.h"
#include "recorder/utility/child_process.h"

namespace recorder {

/// A lighttpd that listens, which ends with this object. One thread.
class WebServer {
 public:
  /// Starts it at the wanted address, on its port or a free one, and waits until it listens. Throws std::runtime_error
  /// when it does not, or when its certificate cannot be used.
  explicit WebServer(const WebServerOptions& options);

  int Port() const { return port_; }

  /// Lets it read a certificate that was renewed on disk: requests at hand are answered, and no connection is refused
  /// meanwhile. Call now and then. Throws std::runtime_error when the server has ended.
  void Update();

 private:
  std::optional<ServedCertificate> certificate_;
  ChildProcess process_;
  int port_ = 0;
};

}  // namespace recorder
