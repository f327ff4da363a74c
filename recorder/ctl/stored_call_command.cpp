#include "recorder/ctl/stored_call_command.h"

#include <memory>
#include <stdexcept>

#include "recorder/ctl/camera/camera_input.h"
#include "recorder/ctl/run_call.h"
#include "recorder/host/host.h"
#include "recorder/host/stored_call.h"

namespace recorder {

namespace {

struct StoredCallOptions {
  int id = 0;
  std::string pictureFile;
};

void CallStored(const std::string& method, const StoredCallOptions& options, const std::string& configOption) {
  const std::filesystem::path pictureFile = PictureFile(options.pictureFile);
  const Host host = StartHostFor(method, configOption);
  const CameraRecord camera = FindEnabled(Records(host.config.stateFolder), options.id);
  RunAndPrint(StoredCall(host.module, method, camera), camera.name, pictureFile);
}

}  // namespace

CameraRecord FindEnabled(const Records& records, int id) {
  CameraRecord camera = FindCamera(records, id);
  if (camera.status == CAM_CONN_STATUS_DISABLED) {
    throw std::runtime_error("camera " + std::to_string(id) + " is disabled");
  }
  return camera;
}

void AddStoredCallCommands(CLI::App& app, const std::string& configOption) {
  const auto options = std::make_shared<StoredCallOptions>();

  CLI::App* test = app.add_subcommand("test", "Test a stored camera and print the answer of CameraTest");
  AddId(*test, options->id);
  test->footer("Example:\n  recorderctl test 3");
  test->callback([options, &configOption] { CallStored(kTestMethod, *options, configOption); });

  CLI::App* snapshot = app.add_subcommand("snapshot", "Take a picture of a stored camera");
  AddId(*snapshot, options->id);
  AddPictureFile(*snapshot, options->pictureFile);
  snapshot->footer("Example:\n  recorderctl snapshot 3 -o picture.jpg");
  snapshot->callback([options, &configOption] { CallStored(kPictureMethod, *options, configOption); });
}

}  // namespace recorder
