#include "cameracap/cameracap.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

#include "cameracap/parameters.h"
#include "platform/utility.h"

namespace {

constexpr char kApiName[] = "NORV.Vistrel.CameraCap";
constexpr std::int32_t kApiVersion = 1;

constexpr std::string_view kTrustedClients[] = {"KR180MX", "NVR", "REC_SERVER"};

struct Method {
  const char* name;
  void (CameraCapHandler::*handler)();
};
constexpr Method kMethods[] = {
    {"CameraModelEnum", &CameraCapHandler::HandleCameraModelEnum},
    {"CamCap", &CameraCapHandler::HandleCamCap},
    {"CameraTest", &CameraCapHandler::HandleCameraTest},
    {"GetSnapshot", &CameraCapHandler::HandleCameraSnapshot},
    {"CamCapRemote", &CameraCapHandler::HandleCamCapRemote},
    {"CamCapUserDefineReso", &CameraCapHandler::HandleCamUserDefineReso},
    {"CamBatAddVerify", &CameraCapHandler::HandleCamBatchAddVerify},
    {"EnumExistedCamCap", &CameraCapHandler::HandleEnumExistedCamCap},
};

/// The row of the table that the framework reads for a method.
constexpr APIEntry EntryOf(const Method& method) { return {kApiName, kApiVersion, method.name, HandleProcess}; }

bool IsTrustedClient(const std::string& client) {
  const std::string_view name = client.c_str();  // names end at their first NUL
  return std::find(std::begin(kTrustedClients), std::end(kTrustedClients), name) != std::end(kTrustedClients);
}

/// Admits logged-in users, and trusted clients that prove themselves by a pair of cookie and time.
bool IsAdmitted(const NORV::APIRequest& request) {
  if (request.IsAuthorized()) return true;

  const bool serviceRunning = IsVTRunning();
  const ParameterReader read(request);
  const int isCrossSite = read.Int("isCrossSite", 0);
  const std::string client = read.String("client", "");
  if (!IsTrustedClient(client) || !serviceRunning) return false;

  const std::string cookie = read.String("cookie", "cookie");
  const std::string timestamp = request.GetCookie("timestamp", "");
  return isCrossSite == 1 ? SlaveKdAuthentication().IsAuthByPairMatch(cookie, timestamp)
                          : IsAuthPairMatch(cookie, timestamp);
}

}  // namespace

constinit APIEntry gTable[9] = {
    EntryOf(kMethods[0]), EntryOf(kMethods[1]), EntryOf(kMethods[2]),
    EntryOf(kMethods[3]), EntryOf(kMethods[4]), EntryOf(kMethods[5]),
    EntryOf(kMethods[6]), EntryOf(kMethods[7]), {nullptr, 0, nullptr, nullptr},
};
static_assert(std::size(kMethods) + 1 == std::size(gTable), "each method has its row, and the row of zeros ends them");

APIEntry* GetAPITable() { return gTable; }

void HandleProcess(NORV::APIRequest* request, NORV::APIResponse* response) {
  CameraCapHandler handler(request, response);
  handler.HandleProcess();
}

void CameraCapHandler::HandleProcess() {
  if (!IsAdmitted(*request)) {
    response->SetError(WEBAPI_ERR_NO_PERMISSION, Json::Value());
    return;
  }
  const std::string name = request->GetAPIMethod();
  if (name.empty()) return;
  for (const Method& method : kMethods) {
    if (method.name == name) {
      (this->*method.handler)();
      return;
    }
  }
}
