#include <exception>
#include <string>
#include <vector>

#include "platform/utility.h"
#include "recorder/records/records.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/config.h"
#include "recorder/utility/log.h"

namespace recorder {
namespace {

/// The password that a request may mean. It is of no record, which is logged, where there is none or they cannot be
/// read.
LentPassword PasswordFor(int camId, const std::string& vendor, const std::string& model,
                         const std::string& channel) try {
  const Records records{GetConfig().stateFolder};
  if (camId == 0) {
    const std::vector<CameraRecord> cameras = records.ListModel(vendor, model);
    if (cameras.empty()) LogFailure("No stored password is lent: no camera of " + vendor + " " + model + " is stored.");
    return {cameras, channel};
  }
  if (const auto camera = records.Find(camId)) return {*camera, records.Streams(camId), channel};
  LogFailure("No stored password is lent: there is no camera " + std::to_string(camId) + ".");
  return {{}, channel};
} catch (const std::exception& error) {
  LogFailure(std::string("No stored password is lent: ") + error.what());
  RequestScope::Current().FailLending();
  return {{}, channel};
}

}  // namespace
}  // namespace recorder

int GetCamConnStatus(int camId) try {
  const auto camera = recorder::Records(recorder::GetConfig().stateFolder).Find(camId);
  const int status = camera ? camera->status : CAM_CONN_STATUS_UNKNOWN;
  if (status == CAM_CONN_STATUS_DISABLED) recorder::RequestScope::Current().SetCause(recorder::Outcome::kDisabled);
  return status;
} catch (const std::exception& error) {
  recorder::LogFailure("Camera " + std::to_string(camId) + " counts as switched off: " + error.what());
  recorder::RequestScope::Current().SetCause(recorder::Outcome::kRecorderFailed);
  return CAM_CONN_STATUS_DISABLED;
}

int GetCamOwnerKdId(int camId) try {
  const auto camera = recorder::Records(recorder::GetConfig().stateFolder).Find(camId);
  return camera ? camera->ownerKdId : kLocalOwnerKdId;
} catch (const std::exception& error) {
  recorder::LogFailure(error.what());
  return kLocalOwnerKdId;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the platform's signature
std::string GetCamRealPass(int camId, std::string vendor, std::string model, std::string channel) {
  return recorder::RequestScope::Current().Lend(recorder::PasswordFor(camId, vendor, model, channel));
}
