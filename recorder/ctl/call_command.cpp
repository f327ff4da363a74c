#include "recorder/ctl/call_command.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "recorder/ctl/method_parameters.h"
#include "recorder/ctl/run_call.h"
#include "recorder/host/api_call.h"
#include "recorder/host/host.h"
#include "recorder/http/api_request.h"

namespace recorder {

namespace {

struct CallOptions {
  std::string method;
  std::vector<std::string> pairs;
  std::string jsonFile;
  std::string outputFile;
};

[[noreturn]] void FailUsage(const std::string& reason) { throw CLI::ValidationError("call", reason); }

Json::Value ReadJson(const std::string& file) {
  std::ifstream stream;
  if (file != "-") {
    stream.open(file, std::ios::binary);
    if (!stream) FailUsage("cannot read " + file);
  }
  std::istream& input = file == "-" ? std::cin : stream;
  try {
    return ParseJsonObject(std::string(std::istreambuf_iterator<char>(input), {}));
  } catch (const HttpError& error) {
    FailUsage(error.what());
  }
}

void AddPair(Json::Value& params, const std::string& pair) {
  const std::size_t equals = pair.find('=');
  if (equals == std::string::npos) FailUsage("parameters are written key=value");
  const std::string key = pair.substr(0, equals);
  if (std::find(kSecretParameters.begin(), kSecretParameters.end(), key) != kSecretParameters.end()) {
    FailUsage(key +
              " carries a secret, which other users could read in the list of processes; give it by --json FILE or "
              "--json -");
  }
  params[key] = FormValue(pair.substr(equals + 1));
}

Json::Value ReadParams(const CallOptions& options) {
  Json::Value params = options.jsonFile.empty() ? Json::Value(Json::objectValue) : ReadJson(options.jsonFile);
  for (const std::string& pair : options.pairs) AddPair(params, pair);
  return params;
}

/// What the answer to `call` waits for, in words.
std::string Work(const CallOptions& options, const Json::Value& params) {
  const Json::Value& cameras = params["camList"];
  return cameras.isArray() ? std::to_string(cameras.size()) + " cameras" : options.method;
}

void Call(const CallOptions& options, const std::string& configOption) {
  ApiCall call;
  call.params = ReadParams(options);
  call.isAuthorized = true;  // whoever can read the records may ask
  const std::filesystem::path outputFile = PictureFile(options.outputFile);

  const Host host = StartHostFor(options.method, configOption);
  call.method = host.module.Find(options.method);
  if (call.method == nullptr) FailUsage("the module has no method " + options.method);

  RunAndPrint(call, Work(options, call.params), outputFile);
}

void PrintMethods(const std::string& configOption) {
  const ModuleLibrary module(StartPlatform(FindConfigFile(configOption)).module);
  for (const ModuleMethod& method : module.Methods()) {
    std::cout << method.apiName << "/" << method.version << "/" << method.name << "\n";
  }
}

}  // namespace

void AddCallCommands(CLI::App& app, const std::string& configOption) {
  CLI::App* command = app.add_subcommand("call", "Make one API call and print its answer");
  const auto options = std::make_shared<CallOptions>();
  command->add_option("method", options->method, "method, for example CamCap")->required();
  command->add_option("parameters", options->pairs, "parameters as key=value; none that carries a secret");
  command->add_option("--json", options->jsonFile, "file with a JSON object of parameters, - for standard input");
  AddPictureFile(*command, options->outputFile);
  command->footer(
      "Examples:\n"
      "  recorderctl call CamCap vendor=User\n"
      "  recorderctl call CameraTest --json camera.json\n"
      "  recorderctl call GetSnapshot --json camera.json -o picture.jpg\n"
      "The answer is JSON on standard output; the exit status is 1 when it is a failure. The default picture counts as "
      "one and is not written. The cause of a failure stands on standard error.");
  command->callback([options, &configOption] { Call(*options, configOption); });

  app.add_subcommand("methods", "List the module's methods as they stand in addresses, one a line")
      ->footer("Example:\n  recorderctl methods")
      ->callback([&configOption] { PrintMethods(configOption); });
}

}  // namespace recorder
