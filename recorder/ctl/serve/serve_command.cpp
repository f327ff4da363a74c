#include "recorder/ctl/serve/serve_command.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "recorder/access/users.h"
#include "recorder/ctl/certificate_files.h"
#include "recorder/ctl/serve/idle_runs.h"
#include "recorder/ctl/serve/listen_address.h"
#include "recorder/ctl/serve/run_folder.h"
#include "recorder/ctl/serve/served_address.h"
#include "recorder/ctl/serve/server_errors.h"
#include "recorder/ctl/serve/trusted_route.h"
#include "recorder/ctl/serve/watch_process.h"
#include "recorder/ctl/serve/watchdog.h"
#include "recorder/ctl/serve/web_server.h"
#include "recorder/ctl/serve/worker_pool.h"
#include "recorder/ctl/serve/worker_question.h"
#include "recorder/host/host.h"
#include "recorder/http/use_notes.h"
#include "recorder/media/media_pool.h"
#include "recorder/own/event_stream.h"
#include "recorder/utility/address_policy.h"
#include "recorder/utility/counts.h"
#include "recorder/utility/files.h"
#include "recorder/utility/log.h"

namespace recorder {

namespace {

using std::filesystem::absolute;
using std::filesystem::path;

struct ServeOptions {
  std::string listen;  // ADDRESS:PORT; "": this machine alone, at `port`
  int port = 0;
  int cameraWorkers = 4;    // for methods that wait for cameras
  int listWorkers = 2;      // for methods that do not, so that silent cameras keep nobody from the lists
  std::string certificate;  // PEM file with the certificate chain; "": no TLS
  std::string key;          // PEM file with its key; "": in the same file
  std::string worker;       // program; "": recorder-webapi beside this one
  bool isWatchless = false;

  ListenAddress Address() const {
    return listen.empty() ? ListenAddress{.port = port} : ParseListenAddress(listen).value();
  }
};

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

/// Beside the workers, or else beside this program.
path ProgramBeside(const ServeOptions& options, const char* name) {
  const path beside = WorkerProgram(options).parent_path() / name;
  return exists(beside) ? beside : std::filesystem::read_symlink("/proc/self/exe").parent_path() / name;
}

/// What to serve https with; nothing for http. With --listen alone, the recorder's own is found by itself.
std::optional<CertificateFiles> FindCertificate(const ServeOptions& options, const path& stateFolder) {
  if (!options.certificate.empty()) {
    return CertificateFiles{absolute(options.certificate),
                            absolute(options.key.empty() ? options.certificate : options.key)};
  }
  const CertificateFiles own = OwnCertificate(stateFolder);
  return !options.listen.empty() && exists(own.certificate) ? std::optional(own) : std::nullopt;
}

/// Lets nobody ask from another machine without TLS, which hides logins, and without a user who could log in.
void RefuseUnsafe(const ListenAddress& address, bool hasTls, const path& stateFolder) {
  if (address.IsForThisMachineAlone()) return;
  const std::string refusal = "other machines could ask at " + address.host + ", which needs ";
  if (!hasTls) {
    throw std::runtime_error(
        refusal + "a certificate: \"recorderctl certificate make\" makes one, --tls-certificate names another");
  }
  if (ReadUsers(stateFolder).empty()) {
    throw std::runtime_error(refusal + "a user: \"recorderctl user add admin --random\" makes one");
  }
}

/// Puts what the web server needs into its folder, but for a certificate: see WebServerOptions.
void Furnish(const RunFolder& run, const Config& config) {
  MakeCounts(run / "counts");
  if (config.pageFolder.empty()) {
    std::filesystem::create_directory(run / "www");
  } else {
    std::filesystem::create_directory_symlink(config.pageFolder, run / "www");
  }
  WriteServerErrors(run.Path());
  ReplaceFile(run / "strip.lua", StripScript());
}

/// The processes behind the web server, which find configuration and run folder in their environment.
class Pools {
 public:
  Pools(const RunFolder& run, const ServeOptions& options)
      : logins_(run / "login.sock", ProgramBeside(options, "recorder-login"), 1, SharedCounts().logins,
                Program::kLogin),
        cameraWorkers_(run / "cameras.sock", WorkerProgram(options), options.cameraWorkers,
                       SharedCounts().cameraWorkers, Program::kWorker),
        listWorkers_(run / "lists.sock", WorkerProgram(options), options.listWorkers, SharedCounts().listWorkers,
                     Program::kWorker) {}

  void StartWatch(const ServeOptions& options, const path& stateFolder, int ownPort) {
    setenv(kOwnPortVariable, std::to_string(ownPort).c_str(), 1);
    if (options.isWatchless) {
      idleRuns_.emplace(stateFolder);
    } else {
      watch_.emplace(ProgramBeside(options, "recorder-watch"));
    }
  }

  void Replenish() {
    for (WorkerPool* pool : {&logins_, &cameraWorkers_, &listWorkers_}) pool->Replenish();
    if (watch_) watch_->Replenish();
    if (idleRuns_) idleRuns_->Update();
  }

 private:
  WorkerPool logins_;
  WorkerPool cameraWorkers_;
  WorkerPool listWorkers_;
  std::optional<WatchProcess> watch_;
  std::optional<IdleRuns> idleRuns_;
};

/// Calls `work` now and then, at once when a child ends, until a signal tells the program to end.
template <class Work>
void RepeatUntilSignal(const sigset_t& signals, Work work) {
  const timespec interval{.tv_sec = 0, .tv_nsec = 200'000'000};
  for (int signal = SIGCHLD; signal < 0 || signal == SIGCHLD; signal = sigtimedwait(&signals, nullptr, &interval)) {
    work();
  }
}

/// Whoever waits for the watchdog does not hear why not. A web server that ends is seen without a question.
bool IsAlive(PoolPulse& lists, const std::stop_token& stop) {
  const std::string reason = lists.WhyNone(stop);
  if (!reason.empty() && !stop.stop_requested()) LogFailure("The workers do not answer: " + reason + ".");
  return reason.empty();
}

/// Sets what the processes that are started read from their environment. glibc reads GLIBC_TUNABLES: it keeps some
/// hundred freed pieces of memory of each small size at hand for the next request (mallopt(3) cannot say so).
void SetEnvironment(const RunFolder& run, const path& configFile, const ServeOptions& options) {
  setenv("GLIBC_TUNABLES", "glibc.malloc.tcache_count=127", 0);
  setenv("RECORDER_CONFIG", configFile.c_str(), 1);
  setenv(kUseSocketVariable, (run / "use.sock").c_str(), 1);
  setenv(kStreamsVariable, std::to_string(std::max(1, options.cameraWorkers / 4)).c_str(), 1);
}

void Serve(const ServeOptions& options, const std::string& configOption) {
  const sigset_t signals = BlockSignals();
  const path configFile = FindConfigFile(configOption);
  const Config config = StartPlatform(configFile);
  const ModuleLibrary module(config.module);  // what is wrong with it is said here, not by a worker that dies
  RehearseMedia();

  ListenAddress address = options.Address();
  const std::optional<CertificateFiles> certificate = FindCertificate(options, config.stateFolder);
  RefuseUnsafe(address, certificate.has_value(), config.stateFolder);

  const RunFolder run;
  Furnish(run, config);
  SetEnvironment(run, configFile, options);
  Pools pools(run, options);
  TrustedRoute trustedRoute(run / "route", config.stateFolder);
  WebServer server({run.Path(), address, !config.pageFolder.empty(), certificate, config.proxies});
  address.port = server.Port();
  pools.StartWatch(options, config.stateFolder, address.port);
  const ServedAddress served(config.stateFolder, address, certificate.has_value(), config.hostNames);
  PoolPulse lists(run / "lists.sock", SharedCounts().listWorkers);
  const Watchdog watchdog([&](const std::stop_token& stop) { return IsAlive(lists, stop); });
  std::cout << served.Text() << std::endl;

  RepeatUntilSignal(signals, [&] {
    server.Update();
    pools.Replenish();
    trustedRoute.Update();
  });
}

CLI::Validator IsListenAddress() {
  const auto mistake = [](const std::string& text) {
    return ParseListenAddress(text) ? "" : text + " is no address with a port, such as 192.0.2.7:8443 or [::]:8443";
  };
  return {mistake, "ADDRESS:PORT", "listen"};
}

void AddAddressOptions(CLI::App& command, ServeOptions& options) {
  CLI::Option* port =
      command.add_option("--port", options.port, "port to listen on at 127.0.0.1 (default: a free one)")
          ->check(CLI::Range(0, 65535));
  command
      .add_option("--listen", options.listen,
                  "ADDRESS:PORT or [IPv6]:PORT to listen on instead; port 0 is a free one, [::] all addresses. Where "
                  "other machines can ask, that needs a user and a certificate")
      ->check(IsListenAddress())
      ->excludes(port);
}

void AddTlsOptions(CLI::App& command, ServeOptions& options) {
  CLI::Option* certificate =
      command
          .add_option("--tls-certificate", options.certificate,
                      "serve https with this certificate (PEM file), and with each that replaces it (default with "
                      "--listen: that of \"recorderctl certificate make\", if there is one)")
          ->check(CLI::ExistingFile);
  command.add_option("--tls-key", options.key, "the certificate's key (PEM file; default: it is in the same file)")
      ->check(CLI::ExistingFile)
      ->needs(certificate);
}

void AddWorkerOptions(CLI::App& command, ServeOptions& options) {
  command.add_option("--workers", options.cameraWorkers, "worker processes for methods that wait for cameras")
      ->check(CLI::Range(std::size_t{1}, kMostWorkers))
      ->capture_default_str();
  command.add_option("--list-workers", options.listWorkers, "worker processes for all other methods")
      ->check(CLI::Range(std::size_t{1}, kMostWorkers))
      ->capture_default_str();
  command.add_option("--worker", options.worker, "program of the workers (default: recorder-webapi beside this one)")
      ->check(CLI::ExistingFile)
      ->envname("RECORDER_WORKER");
  command.add_flag("--no-watch", options.isWatchless,
                   "check no stored camera unasked; otherwise each is checked every \"watch.interval\" of the "
                   "configuration, 5 minutes");
}

}  // namespace

void AddServeCommand(CLI::App& app, const std::string& configOption) {
  CLI::App* command = app.add_subcommand("serve", "Run the recorder's web server until it is told to end");
  const auto options = std::make_shared<ServeOptions>();
  AddAddressOptions(*command, *options);
  AddTlsOptions(*command, *options);
  AddWorkerOptions(*command, *options);
  command->footer(
      "Examples:\n"
      "  recorderctl serve --port 8080\n"
      "  recorderctl serve --listen 192.0.2.7:8443\n"
      "  recorderctl serve --listen [::]:8443 --tls-certificate certificate.pem --tls-key key.pem");
  command->callback([options, &configOption] { Serve(*options, configOption); });
}

}  // namespace recorder
