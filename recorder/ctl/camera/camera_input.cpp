#include "recorder/ctl/camera/camera_input.h"

#include <stdexcept>

#include "recorder/ctl/password_input.h"
#include "recorder/device/model/known_models.h"
#include "recorder/records/camera_places.h"

namespace recorder {

void AddId(CLI::App& command, int& id) { command.add_option("id", id, "the camera's id")->required(); }

CAM_CONN_STATUS StatusOf(const std::string& text) {
  return text == "disabled" ? CAM_CONN_STATUS_DISABLED : CAM_CONN_STATUS_NORMAL;
}

CLI::Option* AddNoPasswordFlag(CLI::App& command, bool& hasNoPassword) {
  return command.add_flag("--no-password", hasNoPassword, "store no password");
}

std::string CameraPassword() {
  std::string password = ReadPassword("Password of the camera");
  if (password.empty()) throw std::runtime_error("no password on standard input; --no-password stores none");
  return password;
}

void FailWithoutCamera(int id) { throw std::runtime_error("there is no camera " + std::to_string(id)); }

CameraRecord FindCamera(const Records& records, int id) {
  auto camera = records.Find(id);
  if (!camera) FailWithoutCamera(id);
  return *std::move(camera);
}

void AddForceFlag(CLI::App& command, bool& isForced) {
  command.add_flag("--force", isForced, "store a camera of an unknown model, or one that is stored already");
}

void CheckModel(CameraRecord& camera, const Config& config) {
  const std::string mistake = NameModel(camera, KnownModels(config));
  if (!mistake.empty()) throw std::runtime_error(mistake + "; --force stores it all the same");
}

void CheckPlace(const CameraRecord& camera, const Records& records) {
  const auto other = FindSamePlace(camera, records.List());
  if (!other) return;
  throw std::runtime_error("the same camera as camera " + std::to_string(other->id) + " (" + other->name +
                           "); --force stores it once more");
}

}  // namespace recorder
