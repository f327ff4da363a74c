#include <exception>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/utility.h"
#include "recorder/records/records.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/config.h"
#include "recorder/utility/log.h"

namespace recorder {
namespace {

/// The records whose password a request may mean; none, which is logged, where there is none or they cannot be read.
std::vector<CameraRecord> FindLenders(int camId, const std::string& vendor, const std::string& model) try {
  const Records records{GetConfig().stateFolder};
  if (camId == 0) {
    std::vector<CameraRecord> cameras = records.ListModel(vendor, model);
    if (cameras.empty()) LogFailure("No stored password is lent: no camera of " + vendor + " " + model + " is stored.");
    return cameras;
  }
  if (const auto camera = records.Find(camId)) return {*camera};
  LogFailure("No stored password is lent: there is no camera " + std::to_string(camId) + ".");
  return {};
} catch (const std::exception& error) {
  LogFailure(std::string("No stored password is lent: ") + error.what());
  return {};
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
  const auto asked = camId == 0 ? std::optional(std::move(channel)) : std::nullopt;
  return recorder::RequestScope::Current().Lend({recorder::FindLenders(camId, vendor, model), asked});
}
