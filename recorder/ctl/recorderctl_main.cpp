// recorderctl: the recorder's command line. It hosts the module in its own process, without a server.

#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <string>

#include "recorder/ctl/backup/backup_command.h"
#include "recorder/ctl/call_command.h"
#include "recorder/ctl/camera/camera_command.h"
#include "recorder/ctl/certificate_command.h"
#include "recorder/ctl/completion_command.h"
#include "recorder/ctl/discover_command.h"
#include "recorder/ctl/find_command.h"
#include "recorder/ctl/health_command.h"
#include "recorder/ctl/link_command.h"
#include "recorder/ctl/measure_command.h"
#include "recorder/ctl/models_command.h"
#include "recorder/ctl/serve/serve_command.h"
#include "recorder/ctl/session_command.h"
#include "recorder/ctl/status_command.h"
#include "recorder/ctl/stored_call_command.h"
#include "recorder/ctl/token_command.h"
#include "recorder/ctl/trust_command.h"
#include "recorder/ctl/user_command.h"
#include "recorder/ctl/whole_help.h"

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

/// `configOption` is read when a command runs.
void AddCommands(CLI::App& app, const std::string& configOption) {
  recorder::AddCallCommands(app, configOption);
  recorder::AddServeCommand(app, configOption);
  recorder::AddHealthCommand(app, configOption);
  recorder::AddModelsCommand(app, configOption);
  recorder::AddCameraCommands(app, configOption);
  recorder::AddStatusCommand(app, configOption);
  recorder::AddStoredCallCommands(app, configOption);
  recorder::AddDiscoverCommand(app, configOption);
  recorder::AddFindCommand(app, configOption);
  recorder::AddMeasureCommand(app, configOption);
  recorder::AddUserCommands(app, configOption);
  recorder::AddSessionCommands(app, configOption);
  recorder::AddTokenCommands(app, configOption);
  recorder::AddLinkCommand(app, configOption);
  recorder::AddCertificateCommands(app, configOption);
  recorder::AddTrustCommands(app, configOption);
  recorder::AddBackupCommands(app, configOption);
  recorder::AddCompletionCommand(app);
  recorder::AddWholeHelp(app);
}

int Run(CLI::App& app, int argc, char** argv) {
  try {
    app.parse(argc, argv);
  } catch (const CLI::RuntimeError& error) {
    return error.get_exit_code();
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kWrongUsage;
  } catch (const std::exception& error) {
    std::cerr << "recorderctl: " << error.what() << "\n";
    return kFailed;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Runs the recorder and manages its cameras, users and trusted clients.", "recorderctl");
  app.set_version_flag("--version", "recorderctl " PROJECT_VERSION);
  app.require_subcommand(1);
  std::string configOption;
  app.add_option("--config", configOption,
                 "configuration file (default: $RECORDER_CONFIG, or else /etc/cameracap/recorder.json)");
  AddCommands(app, configOption);
  app.footer(
      "Examples:\n"
      "  recorderctl serve --port 8080\n"
      "  recorderctl discover > cameras.csv && recorderctl camera import cameras.csv\n"
      "  recorderctl call CamCap vendor=User\n"
      "\"recorderctl COMMAND --help\" has more, \"recorderctl --help-all\" has all.");
  return Run(app, argc, argv);
}
