#include "recorder/device/check/camera_driver.h"

#include <utility>

#include "recorder/device/asked/camera_file.h"
#include "recorder/device/check/find_stream.h"
#include "recorder/device/check/model_driver.h"
#include "recorder/device/check/unanswered_driver.h"
#include "recorder/device/check/user_driver.h"
#include "recorder/device/model/built_in_models.h"
#include "recorder/device/model/model_files.h"
#include "recorder/net/source_path.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/log.h"
#include "recorder/utility/whole_address.h"

namespace recorder {
namespace {

/// Makes a path of the one that the user gave, which may be a whole address.
Outcome ReadPath(DriverParameters& parameters) {
  const std::string place = PlaceOf(parameters.address);
  const bool holdsLogin = HoldsLogin(parameters.sourcePath);
  const Outcome outcome = TakeApart(parameters.sourcePath, parameters.address);
  if (outcome != Outcome::kOk) LogUnusable(parameters.address, outcome);
  // A stored camera's password is lent for exactly this path, so that its record names the port as well.
  if (outcome == Outcome::kOk) RequestScope::Current().AllowPort(parameters.address.host, parameters.address.port);
  if (holdsLogin) LogFailure("The path of " + place + " holds a login. User and password in it are not used.");
  return outcome;
}

std::unique_ptr<CameraDriver> MakeUnanswered(Outcome outcome) {
  RequestScope::Current().SetCause(outcome);
  return std::make_unique<UnansweredDriver>(outcome);
}

std::unique_ptr<CameraDriver> MakeAskedDriver(const std::string& vendor, DriverParameters parameters) {
  AskedModel camera = LearnCamera(vendor, parameters.address, parameters.channel, Freshness::kRecent);
  if (!camera.model) return MakeUnanswered(camera.outcome);
  parameters.channel = std::move(camera.channel);
  return std::make_unique<ModelDriver>(std::move(camera.model), std::move(parameters));
}

}  // namespace

std::unique_ptr<CameraDriver> MakeDriver(const std::string& vendor, const std::string& model,
                                         DriverParameters parameters) {
  if (IsGenericVendor(vendor)) return MakeAskedDriver(vendor, std::move(parameters));
  const bool isUser = vendor == kUserVendor;
  FoundModel found = isUser ? FoundModel() : FindModel(vendor, model);
  if (!isUser && !found.model) return nullptr;
  const bool takesPath = isUser || found.model->streams.empty();
  const Outcome read = takesPath ? ReadPath(parameters) : Outcome::kOk;
  if (read != Outcome::kOk) return MakeUnanswered(read);
  if (isUser) return std::make_unique<UserDriver>(std::move(parameters));
  return std::make_unique<ModelDriver>(std::move(found.model), std::move(parameters));
}

}  // namespace recorder
