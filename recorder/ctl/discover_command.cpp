#include "recorder/ctl/discover_command.h"

#include <json/json.h>
#include <unistd.h>

#include <chrono>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "recorder/ctl/camera/csv_cell.h"
#include "recorder/ctl/camera/headings.h"
#include "recorder/device/asked/onvif/discovery.h"
#include "recorder/device/model/built_in_models.h"
#include "recorder/utility/json_text.h"

namespace recorder {

namespace {

struct DiscoverOptions {
  std::optional<std::string> interface;
  int seconds = 3;
  bool isJson = false;
};

/// What users may tell a camera by.
const std::string& NameOf(const onvif::FoundCamera& camera) {
  if (!camera.name.empty()) return camera.name;
  return camera.hardware.empty() ? camera.host : camera.hardware;
}

/// Names come from the cameras, which are strangers.
void PrintCsv(const std::vector<onvif::FoundCamera>& cameras) {
  std::string line;
  for (const char* member : {"name", "address", "port", "vendor", "model"}) {
    line += (line.empty() ? "" : ",") + HeadingOf(member);
  }
  std::cout << line << '\n';
  for (const onvif::FoundCamera& camera : cameras) {
    std::cout << ToCsvCell(NameOf(camera)) << ',' << camera.host << ',' << camera.port << ',' << kOnvifVendor << ','
              << kGenericName << '\n';
  }
}

void PrintJson(const std::vector<onvif::FoundCamera>& cameras) {
  Json::Value list(Json::arrayValue);
  for (const onvif::FoundCamera& camera : cameras) {
    Json::Value& entry = list.append(Json::Value(Json::objectValue));
    entry["vendor"] = kOnvifVendor;
    entry["model"] = kGenericName;
    entry["host"] = camera.host;
    entry["port"] = camera.port;
    entry["name"] = camera.name;
    entry["hardware"] = camera.hardware;
    entry["endpoint"] = camera.endpoint;
  }
  std::cout << ToText(list) << '\n';
}

void RunDiscover(const DiscoverOptions& options) {
  const std::vector<onvif::FoundCamera> cameras =
      onvif::Discover(options.interface, std::chrono::seconds(options.seconds));
  options.isJson ? PrintJson(cameras) : PrintCsv(cameras);
  std::cout.flush();
  if (cameras.empty()) {
    std::cerr << "recorderctl: no camera answered\n";
  } else if (isatty(STDOUT_FILENO) != 0) {
    std::cerr << "recorderctl: found " << cameras.size() << (cameras.size() == 1 ? " camera\n" : " cameras\n");
  }
}

}  // namespace

void AddDiscoverCommand(CLI::App& app) {
  CLI::App* command = app.add_subcommand("discover", "Find the ONVIF cameras on the local network");
  const auto options = std::make_shared<DiscoverOptions>();
  command->add_option("--interface", options->interface,
                      "network interface to ask from (default: all but the loopback)");
  command->add_option("--seconds", options->seconds, "how long to wait for answers (default: 3)")
      ->check(CLI::Range(1, 60));
  command->add_flag("--json", options->isJson, "print JSON instead of a list for \"camera import\"");
  command->footer("Example:\n  recorderctl discover --interface eth0 > cameras.csv");
  command->callback([options] { RunDiscover(*options); });
}

}  // namespace recorder
