#include "recorder/ctl/discover_command.h"

#include <chrono>
#include <exception>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "recorder/ctl/camera/csv_cell.h"
#include "recorder/ctl/camera/headings.h"
#include "recorder/ctl/progress.h"
#include "recorder/device/find/discover.h"
#include "recorder/device/find/discover_json.h"
#include "recorder/device/model/built_in_models.h"
#include "recorder/host/host.h"
#include "recorder/utility/json_text.h"
#include "recorder/utility/state_exchange.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

using find::DeviceState;
using find::FoundDevice;
using find::HeardBy;
using find::StoredMatch;

struct DiscoverOptions {
  std::optional<std::string> interface;
  std::string range;
  int seconds = static_cast<int>(kUsualDiscovery.count());
  bool isJson = false;
};

/// By its number, as it was told last.
using DeviceList = std::map<int, std::pair<FoundDevice, StoredMatch>>;

struct Findings {
  DeviceList devices;
  std::vector<SearchedNetwork> networks;
};

/// What users may tell a camera by.
const std::string& NameOf(const FoundDevice& device) {
  if (!device.name.empty()) return device.name;
  return device.model.empty() ? device.addresses.front() : device.model;
}

/// True for what a list for "camera import" is about.
bool IsForImport(const FoundDevice& device, const StoredMatch& stored) {
  return device.by.contains(HeardBy::kOnvif) && stored.state == DeviceState::kNew;
}

/// Names come from the cameras, which are strangers.
void PrintCsv(const DeviceList& devices) {
  std::string line;
  for (const char* member : {"name", "address", "port", "vendor", "model"}) {
    line += (line.empty() ? "" : ",") + HeadingOf(member);
  }
  std::cout << line << '\n';
  for (const auto& [number, entry] : devices) {
    const auto& [device, stored] = entry;
    if (!IsForImport(device, stored)) continue;
    std::cout << ToCsvCell(NameOf(device)) << ',' << device.addresses.front() << ',' << device.port << ','
              << kOnvifVendor << ',' << kGenericName << '\n';
  }
}

void PrintJson(const Findings& findings) {
  Json::Value json(Json::objectValue);
  Json::Value& devices = json["devices"] = Json::Value(Json::arrayValue);
  for (const auto& [number, entry] : findings.devices) devices.append(DeviceJson(entry.first, entry.second));
  json["networks"] = NetworksJson(findings.networks);
  std::cout << ToText(json) << '\n';
}

std::ostream& Note() { return std::cerr << "recorderctl: "; }

/// For users: which address a stored camera has now, and how its record follows.
void PrintMove(const FoundDevice& device, const StoredMatch& stored) {
  const std::string& address = device.addresses.front();
  for (const CameraRecord& camera : stored.cameras) {
    Note() << "this is \"" << EscapeControls(camera.name) << "\", stored at " << camera.host << ", now at " << address
           << "; if so: recorderctl camera edit " << camera.id << " --host " << address
           << ", which asks for its password again\n";
  }
}

std::string Joined(const std::vector<int>& ports) {
  std::string text;
  for (const int port : ports) text += (text.empty() ? "" : ", ") + std::to_string(port);
  return text;
}

/// What is not in the list, since it is stored, or speaks no ONVIF.
void PrintOthers(const DeviceList& devices) {
  for (const auto& [number, entry] : devices) {
    const auto& [device, stored] = entry;
    if (stored.state == DeviceState::kMoved) PrintMove(device, stored);
    if (stored.state == DeviceState::kKnown) {
      Note() << device.addresses.front() << " is stored: \"" << EscapeControls(stored.cameras.front().name) << "\"\n";
    }
    if (stored.state != DeviceState::kNew || IsForImport(device, stored)) continue;
    Note() << device.addresses.front() << " does not tell of ONVIF"
           << (device.name.empty() ? "" : ", but of \"" + device.name + '"')
           << (device.openPorts.empty() ? "" : "; open ports: " + Joined(device.openPorts)) << '\n';
  }
}

void PrintSearched(const Findings& findings) {
  std::string networks;
  for (const SearchedNetwork& searched : findings.networks) {
    networks += (networks.empty() ? "" : ", ") + searched.network;
  }
  const std::size_t count = findings.devices.size();
  const std::string what = count == 0 ? "no camera" : std::to_string(count) + (count == 1 ? " device" : " devices");
  Note() << what << " answered in " << networks << '\n';
}

Findings Search(const DiscoverRequest& request, Records* records) {
  Findings findings;
  const Progress progress("what answers in the network");
  findings.networks = Discover(request, records, [&](const FoundDevice& device, const StoredMatch& stored) {
    findings.devices[device.number] = {device, stored};
    return true;
  });
  return findings;
}

/// Those of the configuration's recorder, where there are any that this user may read.
std::unique_ptr<Records> StoredRecords(const Config& config) try {
  FinishStateExchange(config.stateFolder);
  return Records::AreThere(config.stateFolder) ? std::make_unique<Records>(config.stateFolder) : nullptr;
} catch (const std::exception& error) {
  Note() << "which cameras are stored is not known: " << error.what() << '\n';
  return nullptr;
}

void RunDiscover(const DiscoverOptions& options, const std::string& configOption) {
  std::unique_ptr<Records> records;
  if (const auto file = FindAnyConfigFile(configOption)) {
    const Config config = LoadConfig(*file);
    UseConfig(config);
    records = StoredRecords(config);
  }
  const Findings findings =
      Search({options.interface, std::chrono::seconds(options.seconds), options.range}, records.get());
  options.isJson ? PrintJson(findings) : PrintCsv(findings.devices);
  std::cout.flush();
  if (!options.isJson) PrintOthers(findings.devices);
  PrintSearched(findings);
}

}  // namespace

void AddDiscoverCommand(CLI::App& app, const std::string& configOption) {
  CLI::App* command = app.add_subcommand("discover", "Find the cameras in the network, and those that have moved");
  const auto options = std::make_shared<DiscoverOptions>();
  command->add_option("--interface", options->interface, "network interface to ask from (default: all)");
  command->add_option("--seconds", options->seconds, "how long to wait for answers (default: 5)")
      ->check(CLI::Range(1, static_cast<int>(kLongestDiscovery.count())));
  command->add_option("--range", options->range,
                      "try the ports of cameras at each address of this range, 1024 at most, such as 192.168.1.0/24");
  command->add_flag("--json", options->isJson, "print all that is found in JSON");
  command->footer(
      "Prints the new ONVIF cameras as a list for \"camera import\", and tells of all else on standard error.\n"
      "Examples:\n"
      "  recorderctl discover --interface eth0 > cameras.csv\n"
      "  recorderctl discover --range 192.168.1.0/24 --json");
  command->callback([options, &configOption] { RunDiscover(*options, configOption); });
}

}  // namespace recorder
