#include "recorder/ctl/serve/serve_command.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

#include "recorder/ctl/serve/run_folder.h"
#include "recorder/ctl/serve/served_address.h"
#include "recorder/ctl/serve/server_errors.h"
#include "recorder/ctl/serve/trusted_route.h"
#include "recorder/ctl/serve/web_server.h"
#include "recorder/ctl/serve/worker_pool.h"
#include "recorder/host/host.h"
#include "recorder/http/use_notes.h"
#include "recorder/media/media_pool.h"
#include "recorder/utility/files.h"

namespace recorder {

namespace {

using std::filesystem::absolute;
using std::filesystem::create_symlink;
using std::filesystem::path;

struct ServeOptions {
  int port = 0;
  int cameraWorkers = 4;    // for methods that wait for cameras
  int listWorkers = 2;      // for methods that do not, so that silent cameras keep nobody from the lists
  std::string certificate;  // PEM file with the certificate chain; "": no TLS
  std::string key;          // PEM file with its key; "": in the same file
  std::string worker;       // program; "": recorder-webapi beside this one

  bool HasTls() const { return !certificate.empty(); }
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
path LoginProgram(const ServeOptions& options) {
  const path beside = WorkerProgram(options).parent_path() / "recorder-login";
  return exists(beside) ? beside : std::filesystem::read_symlink("/proc/self/exe").parent_path() / "recorder-login";
}

/// Puts what the web server needs into its folder: see WebServerOptions.
void Furnish(const RunFolder& run, const ServeOptions& options, const Config& config) {
  if (config.pageFolder.empty()) {
    std::filesystem::create_directory(run / "www");
  } else {
    std::filesystem::create_directory_symlink(config.pageFolder, run / "www");
  }
  WriteServerErrors(run.Path());
  ReplaceFile(run / "strip.lua", StripScript());
  if (!options.HasTls()) return;
  create_symlink(absolute(options.certificate), run / "certificate");
  create_symlink(absolute(options.key.empty() ? options.certificate : options.key), run / "key");
}

/// Calls `work` now and then, at once when a child ends, until a signal tells the program to end.
template <class Work>
void RepeatUntilSignal(const sigset_t& signals, Work work) {
  const timespec interval{.tv_sec = 0, .tv_nsec = 200'000'000};
  for (int signal = SIGCHLD; signal < 0 || signal == SIGCHLD; signal = sigtimedwait(&signals, nullptr, &interval)) {
    work();
  }
}

void Serve(const ServeOptions& options, const std::string& configOption) {
  const sigset_t signals = BlockSignals();
  const path configFile = FindConfigFile(configOption);
  const Config config = StartPlatform(configFile);
  const ModuleLibrary module(config.module);  // what is wrong with it is said here, not by a worker that dies
  RehearseMedia();

  const RunFolder run;
  Furnish(run, options, config);
  setenv("RECORDER_CONFIG", configFile.c_str(), 1);
  setenv(kUseSocketVariable, (run / "use.sock").c_str(), 1);
  WorkerPool logins(run / "login.sock", LoginProgram(options), 1);
  TrustedRoute trustedRoute(run / "route", config.stateFolder);
  WorkerPool cameraWorkers(run / "cameras.sock", WorkerProgram(options), options.cameraWorkers);
  WorkerPool listWorkers(run / "lists.sock", WorkerProgram(options), options.listWorkers);
  WebServer server =
      StartWebServer({run.Path(), options.port, !config.pageFolder.empty(), options.HasTls(), config.proxies});
  const ServedAddress address(config.stateFolder, options.HasTls(), server.port);
  std::cout << address.Text() << std::endl;

  RepeatUntilSignal(signals, [&] {
    if (server.process.HasEnded()) throw std::runtime_error("the web server has ended");
    logins.Replenish();
    cameraWorkers.Replenish();
    listWorkers.Replenish();
    trustedRoute.Update();
  });
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
