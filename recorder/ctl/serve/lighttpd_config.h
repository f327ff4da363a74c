#pragma once

#include <filesystem>
#include <string>

namespace recorder {

/// What the web server is to serve. It finds all else in its run folder: "www", the page's files; "users"; with TLS
/// "certificate" and "key"; "error-STATUS.html"; "cameras.sock" and "lists.sock", where the workers listen; and
/// "route", the folder of TrustedRoute.
struct WebServerOptions {
  std::filesystem::path runFolder;
  int port = 0;  ///< 0: a free one
  bool hasPage = false;
  bool hasTls = false;
};

/// The text of lighttpd's configuration file, for a server that listens on `port` of 127.0.0.1.
std::string LighttpdConfig(const WebServerOptions& options, int port);

}  // namespace recorder
