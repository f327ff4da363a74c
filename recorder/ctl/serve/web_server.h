#pragma once

#include "recorder/ctl/serve/child_process.h"
#include "recorder/ctl/serve/lighttpd_config.h"

namespace recorder {

/// A lighttpd that listens, which ends with this object.
struct WebServer {
  ChildProcess process;
  int port = 0;
};

/// Starts it on the wanted port, or on a free one, and waits until it listens. Throws std::runtime_error when it does
/// not.
WebServer StartWebServer(const WebServerOptions& options);

}  // namespace recorder
