#include "recorder/device/check/wanted_camera.h"

#include "recorder/device/asked/camera_file.h"
#include "recorder/device/model/built_in_models.h"
#include "recorder/device/model/model_files.h"
#include "recorder/request/request_scope.h"

namespace recorder {
namespace {

/// Of a camera that has to be asked and was not, nobody knows it.
std::string DefaultChannel(const std::string& vendor, const std::string& model, const CameraAddress& address) {
  if (IsGenericVendor(vendor)) {
    const auto kept = ReadCameraFile(vendor, KeptFile(vendor, address.host, address.port), "");
    return kept->readAt == 0 ? "" : kept->channels.preset;
  }
  const FoundModel found = FindModel(vendor, model);
  return found.model ? found.model->channels.preset : "";
}

}  // namespace

void NameWantedCamera(const std::string& vendor, const std::string& model, const CameraAddress& address,
                      const std::optional<std::string>& sourcePath) {
  LentPassword* lent = RequestScope::Current().FindLent(address.password);
  if (lent == nullptr) return;
  lent->LendFor(
      {vendor, model, address.host, address.port, address.user, sourcePath, DefaultChannel(vendor, model, address)});
}

}  // namespace recorder
