#include "recorder/webapi/ctl/serve_command.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "recorder/utility/files.h"
#include "recorder/utility/handle.h"
#include "recorder/webapi/ctl/users.h"
#include "recorder/webapi/host.h"

namespace recorder {

namespace {

using std::filesystem::path;

constexpr int kFreePortTries = 5;
constexpr std::chrono::seconds kStartLimit{15};

struct ServeOptions {
  int port = 0;
  int workers = 4;
};

sockaddr_in LoopbackAddress(int port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  return address;
}

FileDescriptor MakeSocket() { return FileDescriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)); }

int FindFreePort() {
  const FileDescriptor probe = MakeSocket();
  sockaddr_in address = LoopbackAddress(0);
  socklen_t length = sizeof(address);
  if (bind(probe.Get(), reinterpret_cast<sockaddr*>(&address), length) != 0 ||
      getsockname(probe.Get(), reinterpret_cast<sockaddr*>(&address), &length) != 0) {
    throw std::runtime_error("no free port");
  }
  return ntohs(address.sin_port);
}

bool IsListening(int port) {
  const FileDescriptor probe = MakeSocket();
  const sockaddr_in address = LoopbackAddress(port);
  return connect(probe.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
}

/// The server's own folder: mode 0700, since whoever can write to the workers' socket can claim a login. Its short path
/// suits a socket, and nothing of the user's own paths has to be quoted in the server's configuration.
class RunFolder {
 public:
  RunFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "recorder-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make a folder in " + name);
    folder_ = name;
  }
  ~RunFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  RunFolder(const RunFolder&) = delete;
  RunFolder& operator=(const RunFolder&) = delete;

  path operator/(const char* name) const { return folder_ / name; }

 private:
  path folder_;
};

std::string Quoted(const path& file) { return '"' + file.string() + '"'; }

/// Configuration of lighttpd: it brings logins, limits and the restart of a dead worker. Bodies too large for the
/// workers are let through up to a limit, so that the workers can answer why they are refused.
std::string ServerConfiguration(const RunFolder& run, int port, const ServeOptions& options) {
  return "server.bind = \"127.0.0.1\"\n"
         "server.port = " +
         std::to_string(port) +
         "\n"
         "server.document-root = " +
         Quoted(run / "www") +
         "\n"
         "server.modules = ( \"mod_auth\", \"mod_authn_file\", \"mod_fastcgi\" )\n"
         "server.max-request-size = 4096\n"
         "server.max-read-idle = 10\n"
         "server.max-connections = 256\n"
         "auth.backend = \"htpasswd\"\n"
         "auth.backend.htpasswd.userfile = " +
         Quoted(run / "users") +
         "\n"
         "auth.require = ( \"/api/\" => ( \"method\" => \"basic\", \"realm\" => \"recorder\", "
         "\"require\" => \"valid-user\" ) )\n"
         "fastcgi.server = ( \"/api/\" => ( ( \"socket\" => " +
         Quoted(run / "api.sock") +
         ", "
         "\"bin-path\" => " +
         Quoted(run / "worker") +
         ", "
         "\"max-procs\" => " +
         std::to_string(options.workers) + ", \"check-local\" => \"disable\" ) ) )\n";
}

/// A running lighttpd with its workers, which end with this object and with this process.
class WebServer {
 public:
  explicit WebServer(const path& configuration) : process_(fork()) {
    if (process_ < 0) throw std::runtime_error("cannot start the web server");
    if (process_ == 0) Execute(configuration);
  }
  ~WebServer() {
    if (process_ > 0) {
      kill(process_, SIGTERM);
      waitpid(process_, nullptr, 0);
    }
  }
  WebServer(const WebServer&) = delete;
  WebServer& operator=(const WebServer&) = delete;

  /// True when the server has ended of its own accord.
  bool HasEnded() {
    if (process_ > 0 && waitpid(process_, nullptr, WNOHANG) == process_) process_ = -1;
    return process_ < 0;
  }

 private:
  [[noreturn]] static void Execute(const path& configuration) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    for (const char* program : {"lighttpd", "/usr/sbin/lighttpd"}) {
      execlp(program, program, "-D", "-f", configuration.c_str(), nullptr);
    }
    std::cerr << "recorderctl: lighttpd is not installed\n";
    _exit(127);
  }

  pid_t process_;
};

/// Starts the server on the wanted port, or on a free one, and waits until it listens. Another program may take a free
/// port before the server does; then the next one is tried.
std::unique_ptr<WebServer> StartServer(const RunFolder& run, const ServeOptions& options, int& port) {
  const path configuration = run / "lighttpd.conf";
  for (int tries = options.port != 0 ? 1 : kFreePortTries; tries > 0; --tries) {
    port = options.port != 0 ? options.port : FindFreePort();
    ReplaceFile(configuration, ServerConfiguration(run, port, options));
    auto server = std::make_unique<WebServer>(configuration);
    for (const auto end = Clock::now() + kStartLimit; Clock::now() < end && !server->HasEnded();) {
      if (IsListening(port)) return server;
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  }
  throw std::runtime_error("the web server did not start");
}

/// Blocks the signals that end the program; call before anything is started.
sigset_t BlockEndSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) sigaddset(&signals, signal);
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  return signals;
}

void Serve(const ServeOptions& options, const std::string& configOption) {
  const sigset_t endSignals = BlockEndSignals();
  const path configFile = FindConfigFile(configOption);
  const Config config = StartPlatform(configFile);
  const ModuleLibrary module(config.module);  // what is wrong with it is said here, not by a worker that dies

  const RunFolder run;
  std::filesystem::create_directory(run / "www");
  std::filesystem::create_symlink(UsersFile(config.stateFolder), run / "users");
  std::filesystem::create_symlink(std::filesystem::read_symlink("/proc/self/exe").parent_path() / "recorder-webapi",
                                  run / "worker");
  setenv("RECORDER_CONFIG", configFile.c_str(), 1);

  int port = 0;
  const std::unique_ptr<WebServer> server = StartServer(run, options, port);
  std::cout << "http://127.0.0.1:" << port << "/" << std::endl;

  const timespec interval{.tv_sec = 0, .tv_nsec = 200'000'000};
  while (sigtimedwait(&endSignals, nullptr, &interval) < 0) {
    if (server->HasEnded()) throw std::runtime_error("the web server has ended");
  }
}

}  // namespace

void AddServeCommand(CLI::App& app, const std::string& configOption) {
  CLI::App* command = app.add_subcommand("serve", "Run the recorder's web server on 127.0.0.1 until it is told to end");
  const auto options = std::make_shared<ServeOptions>();
  command->add_option("--port", options->port, "port to listen on (default: a free one)")->check(CLI::Range(0, 65535));
  command->add_option("--workers", options->workers, "worker processes")
      ->check(CLI::Range(1, 64))
      ->capture_default_str();
  command->callback([options, &configOption] { Serve(*options, configOption); });
}

}  // namespace recorder
