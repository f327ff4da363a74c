#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "recorder/ctl/certificate_files.h"
#include "recorder/ctl/serve/listen_address.h"

namespace recorder {

/// What the web server is to serve. It finds all else in its run folder: "www", the page's files; with TLS
/// "certificate", with its key in it; "error-STATUS.html"; "cameras.sock" and "lists.sock", where the workers listen,
/// and "login.sock", where recorder-login does; "strip.lua", see StripScript(); and "route", the folder of
/// TrustedRoute.
struct WebServerOptions {
  std::filesystem::path runFolder;
  ListenAddress address;
  bool hasPage = false;
  std::optional<CertificateFiles> certificate = {};  ///< for TLS; nothing for plain HTTP
  std::vector<std::string> proxies = {};             ///< addresses that are believed whom they ask for
};

/// The text of lighttpd's configuration file, for a server that listens on `port` of the wanted address.
std::string LighttpdConfig(const WebServerOptions& options, int port);

/// The text of a script that the web server runs: it takes a name and password that were right out of a request before
/// that goes to a worker.
std::string StripScript();

}  // namespace recorder
