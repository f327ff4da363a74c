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
  std::string_view name;
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

APIEntry gTable[9] = {
    {kApiName, kApiVersion, "CameraModelEnum", HandleProcess},
    {kApiName, kApiVersion, "CamCap", HandleProcess},
    {kApiName, kApiVersion, "CameraTest", HandleProcess},
    {kApiName, kApiVersion, "GetSnapshot", HandleProcess},
    {kApiName, kApiVersion, "CamCapRemote", HandleProcess},
    {kApiName, kApiVersion, "CamCapUserDefineReso", HandleProcess},
    {kApiName, kApiVersion, "CamBatAddVerify", HandleProcess},
    {kApiName, kApiVersion, "EnumExistedCamCap", HandleProcess},
    {nullptr, 0, nullptr, nullptr},
};

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
