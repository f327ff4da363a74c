#include "recorder/ctl/camera/camera_change.h"

#include <memory>

#include "recorder/ctl/camera/camera_input.h"
#include "recorder/ctl/state_folder.h"
#include "recorder/records/records.h"

namespace recorder {

namespace {

struct ChangeOptions {
  int id = 0;
  bool hasNoPassword = false;
  std::string status;
};

void SetPassword(const ChangeOptions& options, Records records) {
  Expect(records.Find(options.id).has_value(), options.id);  // before the user types
  std::string password = CameraPassword(options.hasNoPassword);
  const WipeAtEnd wipe(password);
  Expect(records.SetPassword(options.id, password), options.id);
}

void SetStatus(const ChangeOptions& options, Records records) {
  Expect(records.SetStatus(options.id, StatusOf(options.status)), options.id);
}

}  // namespace

void AddCameraChanges(CLI::App& cameraCommand, const std::string& configOption) {
  const auto options = std::make_shared<ChangeOptions>();

  CLI::App* remove = cameraCommand.add_subcommand("remove", "Remove a camera");
  AddId(*remove, options->id);
  remove->footer("Example:\n  recorderctl camera remove 3");
  remove->callback(
      [options, &configOption] { Expect(Records(StateFolder(configOption)).Remove(options->id), options->id); });

  CLI::App* password =
      cameraCommand.add_subcommand("password", "Change a camera's password, read from standard input or a prompt");
  AddId(*password, options->id);
  AddNoPasswordFlag(*password, options->hasNoPassword);
  password->footer("Example:\n  recorderctl camera password 3");
  password->callback([options, &configOption] { SetPassword(*options, Records(StateFolder(configOption))); });

  CLI::App* status =
      cameraCommand.add_subcommand("status", "Enable or disable a camera; a disabled one gets the default picture");
  AddId(*status, options->id);
  AddStatus(*status, "status", options->status)->required();
  status->footer("Example:\n  recorderctl camera status 3 disabled");
  status->callback([options, &configOption] { SetStatus(*options, Records(StateFolder(configOption))); });
}

}  // namespace recorder
