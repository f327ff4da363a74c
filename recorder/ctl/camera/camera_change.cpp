#include "recorder/ctl/camera/camera_change.h"

#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

#include "recorder/ctl/camera/camera_input.h"
#include "recorder/ctl/state_folder.h"
#include "recorder/records/records.h"

namespace recorder {

namespace {

struct PasswordOptions {
  int id = 0;
  bool hasNoPassword = false;
};

struct StatusOptions {
  int id = 0;
  std::string status;
};

void Remove(int id, Records records) {
  if (records.Remove(id) != ChangeResult::kDone) FailWithoutCamera(id);
  std::cout << "removed camera " << id << "; within " << kUndoTime.count()
            << " seconds it can be brought back: recorderctl camera restore " << id << '\n';
}

void Restore(int id, Records records) {
  if (records.Restore(id)) return;
  throw std::runtime_error("no camera " + std::to_string(id) + " was removed within the last " +
                           std::to_string(kUndoTime.count()) + " seconds");
}

void SetPassword(const PasswordOptions& options, Records records) {
  FindCamera(records, options.id);  // before the user types
  std::string password = options.hasNoPassword ? "" : CameraPassword();
  const WipeAtEnd wipe(password);
  if (records.Change(options.id, {.password = &password}) != ChangeResult::kDone) FailWithoutCamera(options.id);
}

void SetStatus(const StatusOptions& options, Records records) {
  const auto change = [&](CameraRecord& camera) { camera.status = StatusOf(options.status); };
  if (records.Change(options.id, {.record = change}) != ChangeResult::kDone) FailWithoutCamera(options.id);
}

void AddRemove(CLI::App& cameraCommand, const std::string& configOption) {
  CLI::App* remove = cameraCommand.add_subcommand("remove", "Remove a camera; \"restore\" undoes it for a minute");
  const auto id = std::make_shared<int>(0);
  AddId(*remove, *id);
  remove->footer("Example:\n  recorderctl camera remove 3");
  remove->callback([id, &configOption] { Remove(*id, Records(StateFolder(configOption))); });
}

void AddRestore(CLI::App& cameraCommand, const std::string& configOption) {
  CLI::App* restore =
      cameraCommand.add_subcommand("restore", "Bring back a camera that was removed within the last minute");
  const auto id = std::make_shared<int>(0);
  AddId(*restore, *id);
  restore->footer("Example:\n  recorderctl camera restore 3");
  restore->callback([id, &configOption] { Restore(*id, Records(StateFolder(configOption))); });
}

void AddPassword(CLI::App& cameraCommand, const std::string& configOption) {
  CLI::App* password =
      cameraCommand.add_subcommand("password", "Change a camera's password, read from standard input or a prompt");
  const auto options = std::make_shared<PasswordOptions>();
  AddId(*password, options->id);
  AddNoPasswordFlag(*password, options->hasNoPassword);
  password->footer("Example:\n  recorderctl camera password 3");
  password->callback([options, &configOption] { SetPassword(*options, Records(StateFolder(configOption))); });
}

void AddCameraStatus(CLI::App& cameraCommand, const std::string& configOption) {
  CLI::App* status =
      cameraCommand.add_subcommand("status", "Enable or disable a camera; a disabled one gets the default picture");
  const auto options = std::make_shared<StatusOptions>();
  AddId(*status, options->id);
  AddStatus(*status, "status", options->status)->required();
  status->footer("Example:\n  recorderctl camera status 3 disabled");
  status->callback([options, &configOption] { SetStatus(*options, Records(StateFolder(configOption))); });
}

}  // namespace

void AddCameraChanges(CLI::App& cameraCommand, const std::string& configOption) {
  AddRemove(cameraCommand, configOption);
  AddRestore(cameraCommand, configOption);
  AddPassword(cameraCommand, configOption);
  AddCameraStatus(cameraCommand, configOption);
}

}  // namespace recorder
