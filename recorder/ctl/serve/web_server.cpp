#include "recorder/ctl/serve/web_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <iostream>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "recorder/utility/clock.h"
#include "recorder/utility/files.h"
#include "recorder/utility/handle.h"

namespace recorder {

namespace {

using std::filesystem::path;

constexpr int kFreePortTries = 5;
constexpr std::chrono::seconds kStartLimit{15};

int FindFreePort() {
  const FileDescriptor probe(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof(address);
  if (bind(probe.Get(), reinterpret_cast<sockaddr*>(&address), length) != 0 ||
      getsockname(probe.Get(), reinterpret_cast<sockaddr*>(&address), &length) != 0) {
    throw std::runtime_error("no free port");
  }
  return ntohs(address.sin_port);
}

void ExecuteServer(const path& configuration) {
  for (const char* program : {"lighttpd", "/usr/sbin/lighttpd"}) {
    execlp(program, program, "-D", "-f", configuration.c_str(), nullptr);
  }
  std::cerr << "recorderctl: lighttpd is not installed\n";
}

/// True when the server listens within the time limit; false, too, when it ends.
bool Listens(ChildProcess& server, const path& pidFile) {
  for (const auto end = Clock::now() + kStartLimit; Clock::now() < end && !server.HasEnded();) {
    std::error_code noFileYet;  // it is written when the server listens
    if (std::filesystem::file_size(pidFile, noFileYet) > 0 && !noFileYet) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

}  // namespace

WebServer StartWebServer(const WebServerOptions& options) {
  const path configuration = options.runFolder / "lighttpd.conf";
  // Another program may take a free port before the server does; then the next one is tried.
  for (int tries = options.port != 0 ? 1 : kFreePortTries; tries > 0; --tries) {
    const int port = options.port != 0 ? options.port : FindFreePort();
    ReplaceFile(configuration, LighttpdConfig(options, port));
    ChildProcess server([&] { ExecuteServer(configuration); });
    if (Listens(server, options.runFolder / "lighttpd.pid")) return {std::move(server), port};
  }
  throw std::runtime_error("the web server did not start");
}

}  // namespace recorder
