#include "recorder/ctl/camera/camera_add.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <vector>

#include "recorder/ctl/camera/camera_input.h"
#include "recorder/ctl/find_command.h"
#include "recorder/ctl/found_text.h"
#include "recorder/ctl/state_folder.h"
#include "recorder/device/find/stored_as.h"
#include "recorder/device/model/known_models.h"
#include "recorder/records/records.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

struct AddOptions {
  CameraRecord camera;
  std::string foundHost;  // "": nothing is to be found
  bool hasNoPassword = false;
  bool isForced = false;
};

/// The main stream of the channel that is asked for, or of the first one.
const ListedStream& MainStream(const FindResult& result, const std::string& channel) {
  const auto found = std::ranges::find_if(result.streams, [&](const ListedStream& stream) {
    return channel.empty() || (stream.channel == channel && stream.name == kOwnStream);
  });
  if (found == result.streams.end()) throw std::runtime_error("no stream of channel " + channel + " was found");
  return *found;
}

/// Nobody has confirmed a stream that was worked out, and ONVIF, which names a stream anew, has not named it.
void RequireConfirmed(const FindResult& result, const ListedStream& stream, const std::string& host) {
  const bool isConfirmed = std::ranges::any_of(
      result.streams, [&](const ListedStream& other) { return other.channel == stream.channel && other.isAsked; });
  if (isConfirmed || result.onvifPort != 0) return;
  std::cout << TextOf(host, result);
  throw std::runtime_error("the camera confirmed no stream of channel " + stream.channel +
                           ": name it by --vendor and --source-path, or store the first one by --force");
}

/// What is stored for the stream that is found.
std::string Find(AddOptions& options, const std::string& password) {
  CameraRecord& camera = options.camera;
  camera.host = options.foundHost;
  const std::vector<int> ports = camera.port == 0 ? std::vector<int>() : std::vector<int>{camera.port};
  const FindResult result = FindInSight({camera.host, camera.user, password, ports});
  PrintWarnings(result);
  const ListedStream& stream = MainStream(result, camera.channel);
  if (!options.isForced) RequireConfirmed(result, stream, camera.host);
  const StoredAs stored = StoreAs(camera.host, result, stream);
  camera.vendor = stored.vendor;
  camera.model = stored.model;
  camera.port = stored.port;
  camera.channel = stored.channel;
  camera.sourcePath = stored.sourcePath;
  return ": " + stored.vendor + (stored.model.empty() ? "" : " " + stored.model) + " at port " +
         std::to_string(stored.port) + ", " + EscapeControls(AddressOf(camera.host, stream));
}

void Check(AddOptions& options, const Config& config, const Records& records) {
  if (options.isForced) {
    NameModel(options.camera, KnownModels(config));  // as far as it is known
  } else {
    CheckModel(options.camera, config);
    CheckPlace(options.camera, records);
  }
}

void Store(AddOptions& options, Records& records, const std::string& password, const std::string& found) {
  CameraRecord& camera = options.camera;
  if (camera.name.empty()) camera.name = camera.host;
  std::cout << "added camera " << records.Add(camera, password) << found << "\n";
}

std::string PasswordOf(const AddOptions& options) { return options.hasNoPassword ? "" : CameraPassword(); }

void Add(AddOptions& options, const Config& config) {
  Records records(config.stateFolder);
  Check(options, config, records);
  std::string password = PasswordOf(options);
  const WipeAtEnd wipe(password);
  Store(options, records, password, "");
}

void AddFound(AddOptions& options, const Config& config) {
  Records records(config.stateFolder);
  std::string password = PasswordOf(options);
  const WipeAtEnd wipe(password);
  const std::string found = Find(options, password);
  Check(options, config, records);
  Store(options, records, password, found);
}

void AddCamera(AddOptions& options, const std::string& configOption) {
  if (!options.foundHost.empty()) return AddFound(options, StartFinding(FindConfigFile(configOption)));
  if (options.camera.vendor.empty()) throw CLI::RequiredError("--vendor, or --find,");
  if (options.camera.host.empty()) throw CLI::RequiredError("--host");
  if (options.camera.port == 0) throw CLI::RequiredError("--port");
  Add(options, ConfigOfState(configOption));
}

void AddRecordOptions(CLI::App& add, AddOptions& options) {
  CameraRecord& camera = options.camera;
  CLI::Option* find = add.add_option(
      "--find", options.foundHost, "host name or address where the camera's main stream is to be found, see \"find\"");
  add.add_option("--vendor", camera.vendor, "vendor, as the model list names it")->excludes(find);
  add.add_option("--model", camera.model, "model, as the model list names it; not for a vendor that has only one")
      ->excludes(find);
  add.add_option("--host", camera.host, "host name or address")->excludes(find);
  add.add_option("--port", camera.port, "port; with --find the one to ask at")->check(CLI::Range(1, 65535));
  add.add_option("--name", camera.name, "name for users (default: the host)");
  add.add_option("--user", camera.user, "user name at the camera");
  add.add_option("--channel", camera.channel, "channel (default: any)");
  add.add_option("--source-path", camera.sourcePath, "path of the stream, for a model that asks for it")
      ->excludes(find);
  add.add_option("--owner", camera.ownerKdId, "id of the recording server that owns the camera (default: 0, this one)")
      ->check(CLI::NonNegativeNumber);
}

}  // namespace

void AddCameraAdd(CLI::App& cameraCommand, const std::string& configOption) {
  CLI::App* add =
      cameraCommand.add_subcommand("add", "Store a camera; its password is read from standard input or a prompt");
  const auto options = std::make_shared<AddOptions>();
  AddRecordOptions(*add, *options);
  AddNoPasswordFlag(*add, options->hasNoPassword);
  AddForceFlag(*add, options->isForced);
  add->footer(
      "Examples:\n"
      "  recorderctl camera add --find 192.0.2.17 --user admin\n"
      "  recorderctl camera add --vendor User --host 192.0.2.17 --port 554 --user admin --source-path /stream1");
  add->callback([options, &configOption] { AddCamera(*options, configOption); });
}

}  // namespace recorder
