#include "recorder/webapi/ctl/call_command.h"

#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "recorder/webapi/api_call.h"
#include "recorder/webapi/cgi_answer.h"
#include "recorder/webapi/ctl/method_parameters.h"
#include "recorder/webapi/ctl/progress.h"
#include "recorder/webapi/host.h"
#include "recorder/webapi/http_request.h"

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

/// Writes the picture of a raw answer, without its header lines.
void WritePicture(const std::string& raw, const std::filesystem::path& outputFile) {
  const std::size_t headerEnd = raw.find("\r\n\r\n");
  const std::string_view picture =
      headerEnd == std::string::npos ? std::string_view(raw) : std::string_view(raw).substr(headerEnd + 4);
  if (outputFile.empty()) {
    if (isatty(STDOUT_FILENO) != 0) FailUsage("the answer is a picture; give -o FILE");
    std::cout.write(picture.data(), static_cast<std::streamsize>(picture.size())).flush();
    return;
  }
  std::ofstream file(outputFile, std::ios::binary | std::ios::trunc);
  file.write(picture.data(), static_cast<std::streamsize>(picture.size()));
  file.close();
  if (!file) throw std::runtime_error("cannot write " + outputFile.string());
}

/// What the answer to `call` waits for, in words.
std::string Work(const CallOptions& options, const Json::Value& params) {
  const Json::Value& cameras = params["camList"];
  return cameras.isArray() ? std::to_string(cameras.size()) + " cameras" : options.method;
}

/// Runs the call while a terminal shows that it goes on.
ApiAnswer RunInSight(const CallOptions& options, const ApiCall& call) {
  const Progress progress(Work(options, call.params));
  return RunCall(call);
}

void Call(const CallOptions& options, const std::string& configOption) {
  ApiCall call;
  call.params = ReadParams(options);
  call.isAuthorized = true;  // whoever can read the records may ask
  const std::filesystem::path outputFile =
      options.outputFile.empty() ? std::filesystem::path() : std::filesystem::absolute(options.outputFile);

  const Host host = StartHost(FindConfigFile(configOption));
  call.method = host.module.Find(options.method);
  if (call.method == nullptr) FailUsage("the module has no method " + options.method);

  const ApiAnswer answer = RunInSight(options, call);
  switch (answer.kind) {
    case ApiAnswer::Kind::kJson:
      std::cout << ToText(answer.json) << "\n";
      if (!answer.json["success"].asBool()) throw CLI::RuntimeError(1);
      return;
    case ApiAnswer::Kind::kRaw:
      WritePicture(answer.raw, outputFile);
      return;
    case ApiAnswer::Kind::kBadParameter:
      FailUsage("the parameter \"" + answer.parameter + "\" has a wrong type or is missing");
    case ApiAnswer::Kind::kException:
      throw std::runtime_error("the module failed: " + answer.reason);
    case ApiAnswer::Kind::kNone:
      throw std::runtime_error("the module wrote no answer");
  }
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
  command->add_option("-o,--output", options->outputFile, "file for a raw picture");
  command->footer(
      "Examples:\n"
      "  recorderctl call CamCap vendor=User\n"
      "  recorderctl call CameraTest --json camera.json\n"
      "  recorderctl call GetSnapshot --json camera.json -o picture.jpg\n"
      "The answer is JSON on standard output; the exit status is 1 when it is a failure.");
  command->callback([options, &configOption] { Call(*options, configOption); });

  app.add_subcommand("methods", "List the module's methods as they stand in addresses, one a line")
      ->footer("Example:\n  recorderctl methods")
      ->callback([&configOption] { PrintMethods(configOption); });
}

}  // namespace recorder
