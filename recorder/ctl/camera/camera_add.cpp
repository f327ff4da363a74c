#include "recorder/ctl/camera/camera_add.h"

#include <iostream>
#include <memory>

#include "recorder/ctl/camera/camera_input.h"
#include "recorder/ctl/camera/known_models.h"
#include "recorder/host/host.h"
#include "recorder/records/records.h"

namespace recorder {

namespace {

struct AddOptions {
  CameraRecord camera;
  bool hasNoPassword = false;
  bool isForced = false;
};

void Add(AddOptions& options, const Config& config) {
  CameraRecord& camera = options.camera;
  Records records(config.stateFolder);
  if (options.isForced) {
    NameModel(camera, KnownModels(config));  // as far as it is known
  } else {
    CheckModel(camera, config);
    CheckPlace(camera, records);
  }
  if (camera.name.empty()) camera.name = camera.host;
  std::string password = options.hasNoPassword ? "" : CameraPassword();
  const WipeAtEnd wipe(password);
  std::cout << "added camera " << records.Add(camera, password) << "\n";
}

void AddRecordOptions(CLI::App& add, CameraRecord& camera) {
  add.add_option("--vendor", camera.vendor, "vendor, as the model list names it")->required();
  add.add_option("--model", camera.model, "model, as the model list names it; not for a vendor that has only one");
  add.add_option("--host", camera.host, "host name or address")->required();
  add.add_option("--port", camera.port, "port")->required()->check(CLI::Range(1, 65535));
  add.add_option("--name", camera.name, "name for users (default: the host)");
  add.add_option("--user", camera.user, "user name at the camera");
  add.add_option("--channel", camera.channel, "channel (default: any)");
  add.add_option("--source-path", camera.sourcePath, "path of the stream, for a model that asks for it");
  add.add_option("--owner", camera.ownerKdId, "id of the recording server that owns the camera (default: 0, this one)")
      ->check(CLI::NonNegativeNumber);
}

}  // namespace

void AddCameraAdd(CLI::App& cameraCommand, const std::string& configOption) {
  CLI::App* add =
      cameraCommand.add_subcommand("add", "Store a camera; its password is read from standard input or a prompt");
  const auto options = std::make_shared<AddOptions>();
  AddRecordOptions(*add, options->camera);
  AddNoPasswordFlag(*add, options->hasNoPassword);
  AddForceFlag(*add, options->isForced);
  add->footer(
      "Example:\n"
      "  recorderctl camera add --vendor User --host 192.0.2.17 --port 554 --user admin --source-path /stream1");
  add->callback([options, &configOption] { Add(*options, LoadConfig(FindConfigFile(configOption))); });
}

}  // namespace recorder
