#include "recorder/ctl/camera/camera_edit.h"

#include <memory>
#include <optional>
#include <stdexcept>

#include "recorder/ctl/camera/camera_input.h"
#include "recorder/ctl/state_folder.h"
#include "recorder/device/model/known_models.h"
#include "recorder/records/camera_places.h"
#include "recorder/records/records.h"

namespace recorder {

namespace {

using Text = std::optional<std::string>;

struct CameraEdit {
  int id = 0;
  Text name;
  Text vendor;
  Text model;
  Text host;
  std::optional<int> port;
  Text user;
  Text channel;
  Text sourcePath;
  Text status;
  bool hasNewPassword = false;
  bool hasNoPassword = false;
  bool isForced = false;
  bool allowsBasic = false;
  bool trustsNewCertificate = false;

  bool IsEmpty() const {
    return !name && !vendor && !model && !host && !port && !user && !channel && !sourcePath && !status &&
           !hasNewPassword && !hasNoPassword && !allowsBasic && !trustsNewCertificate;
  }
};

/// `camera` as it is to be. Its model is not checked.
CameraRecord Changed(CameraRecord camera, const CameraEdit& edit) {
  const std::pair<const Text*, std::string*> texts[] = {
      {&edit.name, &camera.name}, {&edit.vendor, &camera.vendor},   {&edit.host, &camera.host},
      {&edit.user, &camera.user}, {&edit.channel, &camera.channel}, {&edit.sourcePath, &camera.sourcePath},
  };
  for (const auto& [from, to] : texts) {
    if (*from) *to = **from;
  }
  if (edit.vendor || edit.model) camera.model = edit.model.value_or("");
  if (edit.port) camera.port = *edit.port;
  if (edit.status) camera.status = StatusOf(*edit.status);
  return camera;
}

/// Stores what changes alone, since others may change the record meanwhile.
void Store(const CameraEdit& edit, const std::string* password, Records& records) {
  const CameraChange change{.record = [&](CameraRecord& camera) { camera = Changed(camera, edit); },
                            .password = password,
                            .forgetsLogin = edit.allowsBasic,
                            .forgetsCertificates = edit.trustsNewCertificate};
  if (records.Change(edit.id, change) != ChangeResult::kDone) FailWithoutCamera(edit.id);
}

void StoreWithPassword(const CameraEdit& edit, Records& records) {
  std::string password = edit.hasNoPassword ? "" : CameraPassword();
  const WipeAtEnd wipe(password);
  Store(edit, &password, records);
}

/// Checks the model that is wanted, which becomes one by the recorder's own names.
void TakeModelNames(CameraEdit& edit, CameraRecord& camera, const Config& config) {
  if (edit.isForced) {
    NameModel(camera, KnownModels(config));  // as far as it is known
  } else {
    CheckModel(camera, config);
  }
  edit.vendor = camera.vendor;
  edit.model = camera.model;
}

void EditCamera(CameraEdit& edit, const Config& config) {
  if (edit.IsEmpty()) throw std::runtime_error("nothing to change; see recorderctl camera edit --help");
  Records records(config.stateFolder);
  const CameraRecord before = FindCamera(records, edit.id);
  CameraRecord camera = Changed(before, edit);
  if (edit.vendor || edit.model) TakeModelNames(edit, camera, config);
  if (!edit.isForced && !IsSamePlace(before, camera)) CheckPlace(camera, records);
  const bool wantsPassword = edit.hasNewPassword || edit.hasNoPassword || !KeepsPassword(before, camera);
  wantsPassword ? StoreWithPassword(edit, records) : Store(edit, nullptr, records);
}

void AddEditOptions(CLI::App& command, CameraEdit& edit) {
  command.add_option("--name", edit.name, "name for users");
  command.add_option("--vendor", edit.vendor, "vendor, as the model list names it");
  command.add_option("--model", edit.model, "model, as the model list names it; not for a vendor that has only one");
  command.add_option("--host", edit.host, "host name or address");
  command.add_option("--port", edit.port, "port")->check(CLI::Range(1, 65535));
  command.add_option("--user", edit.user, "user name at the camera");
  command.add_option("--channel", edit.channel, "channel, \"\" for any");
  command.add_option("--source-path", edit.sourcePath, "path of the stream");
  AddStatus(command, "--status", edit.status);
  command.add_flag("--password", edit.hasNewPassword, "read a new password from standard input or a prompt")
      ->excludes(AddNoPasswordFlag(command, edit.hasNoPassword));
  AddForceFlag(command, edit.isForced);
  command.add_flag("--allow-basic", edit.allowsBasic,
                   "forget the strongest login that worked, so that the stored password may go by a weaker one again");
  command.add_flag("--trust-new-certificate", edit.trustsNewCertificate,
                   "forget the camera's TLS certificates, so that those of the next contact are taken");
}

}  // namespace

void AddCameraEditCommand(CLI::App& cameraCommand, const std::string& configOption) {
  const auto edit = std::make_shared<CameraEdit>();
  CLI::App* command = cameraCommand.add_subcommand("edit", "Change a stored camera");
  AddId(*command, edit->id);
  AddEditOptions(*command, *edit);
  command->footer(
      "A stored password goes to the stream that it was given for alone. So it is asked for again when host, port,\n"
      "vendor, model, user or path change.\n"
      "Examples:\n"
      "  recorderctl camera edit 3 --name \"back door\" --status disabled\n"
      "  recorderctl camera edit 3 --host 192.0.2.18 < password\n"
      "  recorderctl camera edit 7 --allow-basic\n"
      "  recorderctl camera edit 7 --trust-new-certificate");
  command->callback([edit, &configOption] { EditCamera(*edit, ConfigOfState(configOption)); });
}

}  // namespace recorder
