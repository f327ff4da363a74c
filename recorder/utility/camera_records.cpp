#include <exception>
#include <string>

#include "platform/utility.h"
#include "recorder/utility/config.h"
#include "recorder/utility/log.h"
#include "recorder/utility/records.h"
#include "recorder/utility/request_scope.h"

// Printable, so that it travels in JSON, forms and shells as it is; the random end keeps it from being anybody's
// choice.
const char gszFakePass[] = "[stored-password-6f1e0b9c42d7]";

int GetCamConnStatus(int camId) try {
  const auto camera = recorder::Records(recorder::GetConfig().stateFolder).Find(camId);
  return camera ? camera->status : CAM_CONN_STATUS_UNKNOWN;
} catch (const std::exception& error) {
  recorder::LogFailure("Camera " + std::to_string(camId) + " counts as switched off: " + error.what());
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
  try {
    const recorder::Records records{recorder::GetConfig().stateFolder};
    const auto camera = camId == 0 ? records.FindTheOne(vendor, model, channel) : records.Find(camId);
    if (!camera || camera->vendor != vendor || camera->model != model) {
      throw recorder::RecordsError("camera " + std::to_string(camId) +
                                   ": no password is lent, since no one record fits it with that vendor and model");
    }
    std::string password = records.Password(*camera);
    recorder::RequestScope::Current().LendPassword(password, camera->host, camera->port);
    return password;
  } catch (const std::exception& error) {
    recorder::LogFailure(error.what());
    recorder::RequestScope::Current().RefuseLogins();
    return {};
  }
}
