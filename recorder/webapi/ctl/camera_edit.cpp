#include "recorder/webapi/ctl/camera_edit.h"

#include <memory>
#include <stdexcept>

#include "recorder/utility/records.h"
#include "recorder/webapi/ctl/state_folder.h"

namespace recorder {

namespace {

struct CameraEdit {
  int id = 0;
  bool allowsBasic = false;

  bool IsEmpty() const { return !allowsBasic; }
};

void Run(const CameraEdit& edit, Records records) {
  if (edit.IsEmpty()) throw std::runtime_error("nothing to change; see recorderctl camera edit --help");
  if (!records.Find(edit.id)) throw std::runtime_error("there is no camera " + std::to_string(edit.id));
  if (edit.allowsBasic) records.ForgetLogin(edit.id);
}

}  // namespace

void AddCameraEditCommand(CLI::App& cameraCommand, const std::string& configOption) {
  const auto edit = std::make_shared<CameraEdit>();
  CLI::App* command = cameraCommand.add_subcommand("edit", "Change a stored camera");
  command->add_option("id", edit->id, "the camera's id")->required();
  command->add_flag("--allow-basic", edit->allowsBasic,
                    "forget the strongest login that worked, so that the stored password may go by a weaker one again");
  command->footer("Example:\n  recorderctl camera edit 7 --allow-basic");
  command->callback([edit, &configOption] { Run(*edit, Records(StateFolder(configOption))); });
}

}  // namespace recorder
