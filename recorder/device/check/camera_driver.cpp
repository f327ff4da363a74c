#include "recorder/device/check/camera_driver.h"

#include <utility>

#include "recorder/device/asked/camera_file.h"
#include "recorder/device/check/model_driver.h"
#include "recorder/device/check/unanswered_driver.h"
#include "recorder/device/check/user_driver.h"
#include "recorder/device/model/built_in_models.h"
#include "recorder/device/model/model_files.h"
#include "recorder/request/request_scope.h"

namespace recorder {
namespace {

std::unique_ptr<CameraDriver> MakeAskedDriver(const std::string& vendor, DriverParameters parameters) {
  AskedModel camera = LearnCamera(vendor, parameters.address, parameters.channel, Freshness::kRecent);
  if (!camera.model) {
    RequestScope::Current().SetCause(camera.outcome);
    return std::make_unique<UnansweredDriver>(camera.outcome);
  }
  parameters.channel = std::move(camera.channel);
  return std::make_unique<ModelDriver>(std::move(camera.model), std::move(parameters));
}

}  // namespace

std::unique_ptr<CameraDriver> MakeDriver(const std::string& vendor, const std::string& model,
                                         DriverParameters parameters) {
  if (vendor == kUserVendor) return std::make_unique<UserDriver>(std::move(parameters));
  if (IsGenericVendor(vendor)) return MakeAskedDriver(vendor, std::move(parameters));
  FoundModel found = FindModel(vendor, model);
  if (!found.model) return nullptr;
  return std::make_unique<ModelDriver>(std::move(found.model), std::move(parameters));
}

}  // namespace recorder
