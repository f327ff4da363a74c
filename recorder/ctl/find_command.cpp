#include "recorder/ctl/find_command.h"

#include <unistd.h>

#include <array>
#include <csignal>
#include <cstddef>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string_view>

#include "recorder/ctl/found_text.h"
#include "recorder/ctl/password_input.h"
#include "recorder/device/find/find_json.h"
#include "recorder/host/host.h"
#include "recorder/utility/json_text.h"
#include "recorder/utility/secrets.h"

namespace recorder {

namespace {

struct FindOptions {
  FindRequest request;
  bool isJson = false;
};

[[noreturn]] void FailWith(const FindResult& result) {
  throw std::runtime_error("no stream was found: " + std::string(Describe(result.outcome)));
}

bool TellStep(FindStep step, const FindResult& soFar) {
  if (isatty(STDERR_FILENO) != 0) std::cerr << TextOf(step, soFar) << '\n';
  return true;
}

void RunFind(FindOptions& options, const std::string& configOption) {
  StartFinding(FindConfigFile(configOption));
  FindRequest& request = options.request;
  if (!request.user.empty()) request.password = ReadPassword("Password of the camera");
  const WipeAtEnd wipe(request.password);
  const FindResult result = Find(request, TellStep);
  if (options.isJson) {
    std::cout << ToText(FindJson(request.host, result)) << '\n';
  } else {
    std::cout << TextOf(request.host, result);
  }
  std::cout.flush();
  PrintWarnings(result);
  if (result.outcome != Outcome::kOk) FailWith(result);
}

}  // namespace

Config StartFinding(const std::filesystem::path& configFile) {
  std::signal(SIGPIPE, SIG_IGN);  // what a camera has closed shows in what is written
  return StartPlatform(configFile);
}

FindResult FindInSight(const FindRequest& request) {
  FindResult result = Find(request, TellStep);
  if (result.outcome != Outcome::kOk) FailWith(result);
  return result;
}

void PrintWarnings(const FindResult& result) {
  for (const FindWarning warning : result.warnings) std::cerr << "recorderctl: " << TextOf(warning, result) << '\n';
}

void AddFindCommand(CLI::App& app, const std::string& configOption) {
  CLI::App* command = app.add_subcommand(
      "find", "Find the streams of a camera by its address; its password is read from standard input or a prompt");
  const auto options = std::make_shared<FindOptions>();
  command->add_option("host", options->request.host, "host name or address")->required();
  command->add_option("--user", options->request.user, "user name at the camera (default: no login)");
  command->add_option("--port", options->request.ports, "ports to ask at, twelve at most (default: the usual ones)")
      ->check(CLI::Range(1, 65535))
      ->expected(1, 12);
  command->add_flag("--json", options->isJson, "print JSON");
  command->footer(
      "At most 20 requests in 10 s go to that host and to no other. A wrong password is one refused login.\n"
      "Example:\n  recorderctl find 192.0.2.17 --user admin");
  command->callback([options, &configOption] { RunFind(*options, configOption); });
}

}  // namespace recorder
