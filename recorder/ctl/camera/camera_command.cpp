#include "recorder/ctl/camera/camera_command.h"

#include "recorder/ctl/camera/camera_add.h"
#include "recorder/ctl/camera/camera_change.h"
#include "recorder/ctl/camera/camera_edit.h"
#include "recorder/ctl/camera/camera_import.h"
#include "recorder/ctl/camera/camera_list.h"

namespace recorder {

void AddCameraCommands(CLI::App& app, const std::string& configOption) {
  CLI::App* command = app.add_subcommand("camera", "Manage the stored cameras");
  command->require_subcommand(1);
  AddCameraAdd(*command, configOption);
  AddCameraLists(*command, configOption);
  AddCameraEditCommand(*command, configOption);
  AddCameraChanges(*command, configOption);
  AddCameraImport(*command, configOption);
}

}  // namespace recorder
