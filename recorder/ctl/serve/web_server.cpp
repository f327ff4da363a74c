#include "recorder/ctl/serve/web_server.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <iostream>
#include <memory>
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

using AddressList = std::unique_ptr<addrinfo, Deleter<freeaddrinfo>>;

AddressList ToSocketAddress(const std::string& host) {
  addrinfo hints = {};
  hints.ai_flags = AI_NUMERICHOST;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (getaddrinfo(host.c_str(), "0", &hints, &found) != 0) throw std::runtime_error("no address: " + host);
  return AddressList(found);
}

int FindFreePort(const std::string& host) {
  const AddressList wanted = ToSocketAddress(host);
  const FileDescriptor probe(socket(wanted->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in6 address = {};  // both families have the port at the same place
  socklen_t length = sizeof(address);
  if (bind(probe.Get(), wanted->ai_addr, wanted->ai_addrlen) != 0 ||
      getsockname(probe.Get(), reinterpret_cast<sockaddr*>(&address), &length) != 0) {
    throw std::runtime_error("no free port at " + host + ": " + std::strerror(errno));
  }
  return ntohs(address.sin6_port);
}

/// By its whole path at first: only so can it run anew in the same process.
void ExecuteServer(const path& configuration) {
  for (const char* program : {"/usr/sbin/lighttpd", "lighttpd"}) {
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

WebServer::WebServer(const WebServerOptions& options) {
  if (options.certificate) certificate_.emplace(*options.certificate, options.runFolder / "certificate");
  const path configuration = options.runFolder / "lighttpd.conf";
  const auto& [host, wanted] = options.address;
  // Another program may take a free port before the server does; then the next one is tried.
  for (int tries = wanted != 0 ? 1 : kFreePortTries; tries > 0; --tries) {
    port_ = wanted != 0 ? wanted : FindFreePort(host);
    ReplaceFile(configuration, LighttpdConfig(options, port_));
    process_ = ChildProcess([&] { ExecuteServer(configuration); });
    if (Listens(process_, options.runFolder / "lighttpd.pid")) return;
  }
  throw std::runtime_error("the web server did not start");
}

void WebServer::Update() {
  if (process_.HasEnded()) throw std::runtime_error("the web server has ended");
  if (certificate_ && certificate_->Update()) kill(process_.Id(), SIGUSR1);
}

}  // namespace recorder
