#include "recorder/ctl/measure_command.h"

#include <unistd.h>

#include <cmath>
#include <csignal>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>

#include "recorder/ctl/camera/camera_address.h"
#include "recorder/ctl/password_input.h"
#include "recorder/device/find/measure.h"
#include "recorder/device/find/measure_json.h"
#include "recorder/host/host.h"
#include "recorder/utility/json_text.h"
#include "recorder/utility/secrets.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

struct MeasureOptions {
  std::string address;
  std::string user;
  int seconds = static_cast<int>(kLongestMeasure.count());
  bool isJson = false;
};

struct Stream {
  CameraAddress camera;
  std::string path;
};

/// What `measure` is told as HOST:PORT/PATH, or as a whole address.
Stream StreamOf(const MeasureOptions& options) {
  const bool isWhole = options.address.find("://") != std::string::npos;
  const AddressParts parts = SplitAddress(isWhole ? options.address : "rtsp://" + options.address);
  const auto port = ParseNumber<int>(parts.port);
  if (parts.host.empty() || !port) throw std::runtime_error("no address of a stream: it is HOST:PORT/PATH");
  if (!parts.password.empty()) throw std::runtime_error("type the password on standard input, not in the address");
  return {{parts.host, *port, options.user.empty() ? parts.user : options.user, ""},
          parts.path.empty() ? "/" : parts.path};
}

std::string OneDigit(double number) {
  const std::string tenths = std::to_string(std::lround(number * 10));
  const std::string padded = tenths.size() < 2 ? "0" + tenths : tenths;
  return padded.substr(0, padded.size() - 1) + '.' + padded.back();
}

std::string RatesOf(const find::StreamFigures& figures) {
  return OneDigit(figures.frameRate) + " frames/s, " + std::to_string(std::lround(figures.bitRate)) + " kbit/s";
}

bool TellRates(const MeasureResult& soFar) {
  if (isatty(STDERR_FILENO) != 0) {
    std::cerr << static_cast<int>(soFar.figures.seconds) << " s: " << RatesOf(soFar.figures) << '\n';
  }
  return true;
}

std::string KeyFramesOf(const find::StreamFigures& figures) {
  const bool isSeen = figures.keyFrameDistance > 0;
  return (isSeen ? "every " : "none for ") + OneDigit(isSeen ? figures.keyFrameDistance : figures.keyFrameMoreThan) +
         " s";
}

void PrintText(const MeasureResult& result) {
  std::cout << "codec\t" << EscapeControls(result.codec) << "\nsize\t" << result.width << 'x' << result.height
            << "\nrates\t" << RatesOf(result.figures) << "\nkey frames\t" << KeyFramesOf(result.figures) << "\naudio\t"
            << (result.audio.empty() ? "none" : EscapeControls(result.audio)) << '\n';
}

void Print(const MeasureResult& result, bool isJson) {
  if (isJson) {
    std::cout << ToText(MeasureJson(result)) << '\n';
  } else if (result.outcome == Outcome::kOk) {
    PrintText(result);
  }
  std::cout.flush();
  for (const MeasureWarning warning : result.warnings) {
    std::cerr << "recorderctl: " << TextOf(warning, result.figures) << '\n';
  }
}

void RunMeasure(const MeasureOptions& options, const std::string& configOption) {
  Stream stream = StreamOf(options);
  std::signal(SIGPIPE, SIG_IGN);  // what a camera has closed shows in what is written
  StartPlatform(FindConfigFile(configOption));
  std::string password = stream.camera.user.empty() ? "" : ReadPassword("Password of the camera");
  const WipeAtEnd wipe(password);
  stream.camera.password = password;
  const MeasureResult result =
      Measure(std::move(stream.camera), stream.path, std::chrono::seconds(options.seconds), TellRates);
  Print(result, options.isJson);
  if (result.outcome != Outcome::kOk) {
    throw std::runtime_error("the stream was not measured: " + std::string(Describe(result.outcome)));
  }
}

}  // namespace

void AddMeasureCommand(CLI::App& app, const std::string& configOption) {
  CLI::App* command = app.add_subcommand(
      "measure", "Measure a stream of a camera over RTSP; its password is read from standard input or a prompt");
  const auto options = std::make_shared<MeasureOptions>();
  command->add_option("address", options->address, "where the stream is: HOST:PORT/PATH, or a whole address")
      ->required();
  command->add_option("--user", options->user, "user name at the camera (default: no login)");
  command->add_option("--seconds", options->seconds, "for how long at most (default: 12)")
      ->check(CLI::Range(1, static_cast<int>(kLongestMeasure.count())));
  command->add_flag("--json", options->isJson, "print JSON");
  command->footer(
      "It ends as soon as two distances of key frames were seen. A wrong password is one refused login.\n"
      "Example:\n  recorderctl measure 192.0.2.17:554/stream1 --user admin");
  command->callback([options, &configOption] { RunMeasure(*options, configOption); });
}

}  // namespace recorder
