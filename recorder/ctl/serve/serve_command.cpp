#include "recorder/ctl/serve/serve_command.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "recorder/ctl/serve/child_process.h"
#include "recorder/ctl/serve/trusted_route.h"
#include "recorder/ctl/serve/worker_pool.h"
#include "recorder/ctl/users.h"
#include "recorder/host/api_call.h"
#include "recorder/host/host.h"
#include "recorder/http/cgi_answer.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/files.h"
#include "recorder/utility/handle.h"

namespace recorder {

namespace {

using std::filesystem::path;

constexpr std::size_t kKiB = 1024;  // the server's limits of size are numbers of them
constexpr int kFreePortTries = 5;
constexpr std::chrono::seconds kStartLimit{15};

struct ServeOptions {
  int port = 0;
  int cameraWorkers = 4;    // for methods that wait for cameras
  int listWorkers = 2;      // for methods that do not, so that silent cameras keep nobody from the lists
  std::string certificate;  // PEM file with the certificate chain; "": no TLS
  std::string key;          // PEM file with its key; "": in the same file
  std::string worker;       // program; "": recorder-webapi beside this one

  bool HasTls() const { return !certificate.empty(); }
};

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

/// The server's own folder: mode 0700, since whoever can write to the workers' socket can claim a login. Its short path
/// suits a socket, and nothing of the user's own paths has to be quoted in the server's configuration.
class RunFolder {
 public:
  RunFolder() {
    RemoveAbandoned();
    std::string name = (std::filesystem::temp_directory_path() / kName).string() + "XXXXXX";
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make a folder in " + name);
    folder_ = name;
    lock_ = Lock(folder_);
  }
  ~RunFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  RunFolder(const RunFolder&) = delete;
  RunFolder& operator=(const RunFolder&) = delete;

  path operator/(const char* name) const { return folder_ / name; }

 private:
  /// Nothing when another server has the folder, or it is another user's.
  static FileDescriptor Lock(const path& folder) {
    FileDescriptor lock(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    const bool isOurs = lock && fstat(lock.Get(), &status) == 0 && status.st_uid == geteuid();
    return isOurs && flock(lock.Get(), LOCK_EX | LOCK_NB) == 0 ? std::move(lock) : FileDescriptor();
  }

  /// Removes the folders of servers that were killed: requests may lie there that hold passwords.
  static void RemoveAbandoned() {
    constexpr std::chrono::minutes kYoungest{1};  // the owner of a younger one may be about to lock it
    const auto now = std::filesystem::file_time_type::clock::now();
    std::error_code error;
    std::error_code ignored;
    for (std::filesystem::directory_iterator entry(std::filesystem::temp_directory_path(), error), end;
         !error && entry != end; entry.increment(error)) {
      const bool isFolder = entry->path().filename().string().starts_with(kName);
      if (!isFolder || entry->last_write_time(ignored) > now - kYoungest) continue;
      if (const FileDescriptor lock = Lock(entry->path())) std::filesystem::remove_all(entry->path(), ignored);
    }
  }

  static constexpr char kName[] = "recorder-server-";
  path folder_;
  FileDescriptor lock_;
};

/// What the web server itself refuses, with the reason that it gives in the shape of all answers.
constexpr std::pair<int, const char*> kServerErrors[] = {
    {400, "the request is malformed"},
    {401, "log in as a user of this recorder"},
    {403, "this address is not served, or the cookie \"timestamp\" of a trusted recorder is missing"},
    {404, "no such address"},
    {411, "the length of the body is missing"},
    {413, kBodyTooLarge},
    {431, "the address and the headers are longer than 8 KiB"},
    {500, "the worker that had this request ended; its log says why"},
    {501, "this server knows neither such a method nor such an encoding of a body"},
    {503, "all workers are busy or ended; try again"},
    {505, "this server speaks HTTP/1.0 and 1.1"},
};

void WriteServerErrors(const RunFolder& run) {
  for (const auto& [status, reason] : kServerErrors) {
    Json::Value json(Json::objectValue);
    json["success"] = false;
    json["error"]["code"] = status;
    json["error"]["message"] = reason;
    ReplaceFile(run / ("error-" + std::to_string(status) + ".html").c_str(), ToText(json));
  }
}

/// Configuration of lighttpd: it brings logins and limits. A body over its address's limit is refused when its length
/// is known. Others, which may hold passwords, wait in the server's own folder, at most one a connection: HTTP/2 would
/// have several. The type of its error files comes from their name, which always ends in ".html". It does not tell its
/// name and version, and what a page's folder holds for its developers stays there.
/// API_ADDRESSES are those that the workers answer. Below /trusted/ they do as long as TrustedRoute has its link, and
/// for whoever sends the open half of a pair; for all others the server refuses to follow a link.
constexpr char kServerConfiguration[] = R"text(
server.bind = "127.0.0.1"
server.port = var.port
server.pid-file = var.run + "/lighttpd.pid"
server.document-root = var.run + "/www"
server.modules = ( "mod_setenv", "mod_auth", "mod_authn_file", "mod_fastcgi" )
server.feature-flags = ( "server.h2proto" => "disable", "server.h2c" => "disable" )
server.stat-cache-engine = "disable"
server.upload-dirs = ( var.run )
server.errorfile-prefix = var.run + "/error-"
server.range-requests = "disable"
server.tag = ""
static-file.exclude-extensions = ( ".md", "tsconfig.json" )
mimetype.assign = ( ".html" => "application/json" )
server.max-request-size = LARGEST_BODY
server.max-read-idle = 10
server.max-connections = 256
auth.backend = "htpasswd"
auth.backend.htpasswd.userfile = var.run + "/users"
auth.require = ( "/api/" => ( "method" => "basic", "realm" => "recorder", "require" => "valid-user" ) )
setenv.set-response-header = ( "Cache-Control" => "no-store", "X-Content-Type-Options" => "nosniff",
  "Referrer-Policy" => "no-referrer", "Content-Security-Policy" => "default-src 'none'; frame-ancestors 'none'" )
$HTTP["url"] =~ "API_ADDRESSES" {
  fastcgi.server = ( "/" => ( ( "socket" => var.run + "/cameras.sock", "check-local" => "disable" ) ) )
}
$HTTP["url"] =~ "^/[^/]+/[^/]+/[^/]+/(LIST_METHODS)$" {
  fastcgi.server = ( "/" => ( ( "socket" => var.run + "/lists.sock", "check-local" => "disable" ) ) )
}
$HTTP["url"] =~ "^/[^/]+/[^/]+/[^/]+/(LARGE_METHODS)$" {
  server.max-request-size = LARGEST_LIST
}
$HTTP["url"] =~ "^/trusted(/|$)" {
  server.document-root = var.run + "/route"
  fastcgi.server = ( "/" => ( ( "socket" => var.run + "/cameras.sock", "check-local" => "enable" ) ) )
}
$HTTP["url"] =~ "^/trusted/[^/]+/[^/]+/(LIST_METHODS)$" {
  fastcgi.server = ( "/" => ( ( "socket" => var.run + "/lists.sock", "check-local" => "enable" ) ) )
}
$HTTP["cookie"] !~ "(^|;) *timestamp=[0-9]+ *(;|$)" {
  $HTTP["url"] =~ "^/trusted(/|$)" { server.follow-symlink = "disable" }
}
)text";

/// What the page may do in a browser: run its own scripts, ask this server, show pictures that it made itself, and
/// nothing else (Content Security Policy Level 3, Trusted Types). Its files may be kept if they are asked for anew.
/// Where an error is answered instead of a file, the type is the one that belongs to the error file's name.
constexpr char kPageConfiguration[] = R"(
$HTTP["url"] !~ "API_ADDRESSES" {
  index-file.names = ( "index.html" )
  mimetype.assign = ( "/index.html" => "text/html; charset=utf-8", ".css" => "text/css; charset=utf-8",
    ".js" => "text/javascript; charset=utf-8", ".svg" => "image/svg+xml", ".csv" => "text/csv; charset=utf-8",
    ".yaml" => "application/yaml", ".json" => "application/json", ".html" => "application/json" )
  setenv.set-response-header = ( "Cache-Control" => "no-cache", "X-Content-Type-Options" => "nosniff",
    "Referrer-Policy" => "no-referrer", "Cross-Origin-Opener-Policy" => "same-origin",
    "Content-Security-Policy" => "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob:; " +
      "connect-src 'self'; form-action 'none'; base-uri 'none'; frame-ancestors 'none'; " +
      "require-trusted-types-for 'script'" )
}
)";

constexpr char kTlsConfiguration[] = R"(
server.modules += ( "mod_openssl" )
ssl.engine = "enable"
ssl.pemfile = var.run + "/certificate"
ssl.privkey = var.run + "/key"
ssl.openssl.ssl-conf-cmd = ( "MinProtocol" => "TLSv1.2" )
setenv.add-response-header = ( "Strict-Transport-Security" => "max-age=31536000" )
)";

void Replace(std::string& text, std::string_view place, std::string_view by) {
  for (std::size_t at = text.find(place); at != std::string::npos; at = text.find(place, at + by.size()))
    text.replace(at, place.size(), by);
}

/// For a regular expression.
std::string Alternatives(std::span<const std::string_view> words) {
  std::string text;
  for (const std::string_view word : words) text += (text.empty() ? "" : "|") + std::string(word);
  return text;
}

std::string ServerConfiguration(const RunFolder& run, int port, const ServeOptions& options) {
  std::string text = kServerConfiguration;
  const bool hasPage = !GetConfig().pageFolder.empty();
  if (hasPage) text += kPageConfiguration;
  if (options.HasTls()) text += kTlsConfiguration;
  Replace(text, "LIST_METHODS", Alternatives(ListMethods()));
  Replace(text, "LARGE_METHODS", Alternatives(LargeMethods()));
  Replace(text, "LARGEST_BODY", std::to_string(kLargestBody / kKiB));
  Replace(text, "LARGEST_LIST", std::to_string(kLargestListBody / kKiB));
  Replace(text, "API_ADDRESSES", hasPage ? "^/(api|trusted)(/|$)" : "^/");
  return "var.run = \"" + (run / "").parent_path().string() + "\"\nvar.port = " + std::to_string(port) + text;
}

void ExecuteServer(const path& configuration) {
  for (const char* program : {"lighttpd", "/usr/sbin/lighttpd"}) {
    execlp(program, program, "-D", "-f", configuration.c_str(), nullptr);
  }
  std::cerr << "recorderctl: lighttpd is not installed\n";
}

/// Starts the server on the wanted port, or on a free one, and waits until it listens. Another program may take a free
/// port before the server does; then the next one is tried.
ChildProcess StartServer(const RunFolder& run, const ServeOptions& options, int& port) {
  const path configuration = run / "lighttpd.conf";
  for (int tries = options.port != 0 ? 1 : kFreePortTries; tries > 0; --tries) {
    port = options.port != 0 ? options.port : FindFreePort();
    ReplaceFile(configuration, ServerConfiguration(run, port, options));
    ChildProcess server([&] { ExecuteServer(configuration); });
    for (const auto end = Clock::now() + kStartLimit; Clock::now() < end && !server.HasEnded();) {
      std::error_code noFileYet;  // it is written when the server listens
      if (std::filesystem::file_size(run / "lighttpd.pid", noFileYet) > 0 && !noFileYet) return server;
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  }
  throw std::runtime_error("the web server did not start");
}

/// Blocks the signals that end the program, and the one of a child's end; call before anything is started.
sigset_t BlockSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGCHLD}) sigaddset(&signals, signal);
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  return signals;
}

path WorkerProgram(const ServeOptions& options) {
  if (!options.worker.empty()) return std::filesystem::absolute(options.worker);
  return std::filesystem::read_symlink("/proc/self/exe").parent_path() / "recorder-webapi";
}

void Serve(const ServeOptions& options, const std::string& configOption) {
  const sigset_t signals = BlockSignals();
  const path configFile = FindConfigFile(configOption);
  const Config config = StartPlatform(configFile);
  const ModuleLibrary module(config.module);  // what is wrong with it is said here, not by a worker that dies

  const RunFolder run;
  if (config.pageFolder.empty()) {
    std::filesystem::create_directory(run / "www");
  } else {
    std::filesystem::create_directory_symlink(config.pageFolder, run / "www");
  }
  WriteServerErrors(run);
  std::filesystem::create_symlink(UsersFile(config.stateFolder), run / "users");
  if (options.HasTls()) {
    std::filesystem::create_symlink(std::filesystem::absolute(options.certificate), run / "certificate");
    const std::string& key = options.key.empty() ? options.certificate : options.key;
    std::filesystem::create_symlink(std::filesystem::absolute(key), run / "key");
  }
  setenv("RECORDER_CONFIG", configFile.c_str(), 1);
  TrustedRoute trustedRoute(run / "route", config.stateFolder);
  WorkerPool cameraWorkers(run / "cameras.sock", WorkerProgram(options), options.cameraWorkers);
  WorkerPool listWorkers(run / "lists.sock", WorkerProgram(options), options.listWorkers);

  int port = 0;
  ChildProcess server = StartServer(run, options, port);
  std::cout << (options.HasTls() ? "https" : "http") << "://127.0.0.1:" << port << "/" << std::endl;

  const timespec interval{.tv_sec = 0, .tv_nsec = 200'000'000};
  for (int signal = SIGCHLD; signal < 0 || signal == SIGCHLD; signal = sigtimedwait(&signals, nullptr, &interval)) {
    if (server.HasEnded()) throw std::runtime_error("the web server has ended");
    cameraWorkers.Replenish();
    listWorkers.Replenish();
    trustedRoute.Update();
  }
}

}  // namespace

void AddServeCommand(CLI::App& app, const std::string& configOption) {
  CLI::App* command = app.add_subcommand("serve", "Run the recorder's web server on 127.0.0.1 until it is told to end");
  const auto options = std::make_shared<ServeOptions>();
  command->add_option("--port", options->port, "port to listen on (default: a free one)")->check(CLI::Range(0, 65535));
  command->add_option("--workers", options->cameraWorkers, "worker processes for methods that wait for cameras")
      ->check(CLI::Range(1, 64))
      ->capture_default_str();
  command->add_option("--list-workers", options->listWorkers, "worker processes for all other methods")
      ->check(CLI::Range(1, 64))
      ->capture_default_str();
  CLI::Option* certificate =
      command->add_option("--tls-certificate", options->certificate, "serve https with this certificate (PEM file)")
          ->check(CLI::ExistingFile);
  command->add_option("--tls-key", options->key, "the certificate's key (PEM file; default: it is in the same file)")
      ->check(CLI::ExistingFile)
      ->needs(certificate);
  command->add_option("--worker", options->worker, "program of the workers (default: recorder-webapi beside this one)")
      ->check(CLI::ExistingFile)
      ->envname("RECORDER_WORKER");
  command->footer(
      "Examples:\n"
      "  recorderctl serve --port 8080\n"
      "  recorderctl serve --port 8443 --tls-certificate certificate.pem --tls-key key.pem");
  command->callback([options, &configOption] { Serve(*options, configOption); });
}

}  // namespace recorder
