#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "platform/device.h"
#include "recorder/device/model_files.h"

namespace {

constexpr std::pair<int, CAMCAP_FILE_RESULT> kFileResults[] = {
    {CAMERA_VERIFY_PASSED, CAMCAP_FILE_OBTAINED},           {CAMERA_VERIFY_UNREACHABLE, CAMCAP_FILE_UNREACHABLE},
    {CAMERA_VERIFY_TIMED_OUT, CAMCAP_FILE_UNREACHABLE},     {CAMERA_VERIFY_LOGIN_REFUSED, CAMCAP_FILE_LOGIN_REFUSED},
    {CAMERA_VERIFY_NO_SUCH_STREAM, CAMCAP_FILE_NO_SERVICE},
};

CAMCAP_FILE_RESULT ToFileResult(int verifyResult) {
  const auto* row = std::find_if(std::begin(kFileResults), std::end(kFileResults),
                                 [&](const auto& r) { return r.first == verifyResult; });
  return row == std::end(kFileResults) ? CAMCAP_FILE_NOT_UNDERSTOOD : row->second;
}

int VerifyStream(const CamProfile& profile, const recorder::Model& model, DeviceAPIHandler& api) {
  std::string path;
  int port = profile.port;
  if (api.GetStreamPath(path, port) != 0) return CAMERA_VERIFY_NOT_PREPARED;
  const auto codec = std::find_if(model.codecs.begin(), model.codecs.end(),
                                  [&](const auto& candidate) { return candidate.name == model.presetCodec; });
  return CameraVerify(profile.ip, port, profile.user, profile.pass, path, GetVideoType(codec->name),
                      GetStreamingType(codec->streamTypes.front()), RTSP_PROTOCOL_AUTO)
      .Verify();
}

/// Asks the camera as a camera test does, for the stream that the model sends unless told otherwise.
int VerifyCamera(const CamProfile& profile, const recorder::Model& model) {
  DeviceAPIHandler api;
  api.LoadByParam(DP_LOAD_FROM_MODEL_FILES, profile.ip, profile.port, profile.user, profile.pass, profile.vendor,
                  profile.model, profile.channel, "");
  if (!api.IsValid() || api.NeedsSourcePath()) return CAMERA_VERIFY_NOT_PREPARED;
  return api.HasStreamPath() ? VerifyStream(profile, model, api) : RetDevApiToRetCV(api.VerifyConnection());
}

}  // namespace

int CamCapUtils::GetCamCapFile(CamProfile& profile, std::string& capFilePath, __tag_REMOTE_CAMCAP_CMD cmd) {
  const recorder::FoundModel found = recorder::FindModel(profile.vendor, profile.model);
  if (found.file.empty()) return CAMCAP_FILE_NOT_UNDERSTOOD;
  CAMCAP_FILE_RESULT result = ToFileResult(VerifyCamera(profile, *found.model));
  const bool mustAsk = cmd == REMOTE_CAMCAP_ASK_NOW || result == CAMCAP_FILE_LOGIN_REFUSED;
  if (result != CAMCAP_FILE_OBTAINED && !mustAsk) result = CAMCAP_FILE_SUBSTITUTED;
  if (result <= CAMCAP_FILE_SUBSTITUTED) capFilePath = found.file;
  return result;
}

// No capability file is kept for a camera: all that is known of one stands in its model's file.
// NOLINTNEXTLINE(performance-unnecessary-value-param): the platform's signature has values
std::string GetRealCapFilePath(std::string /*vendor*/, std::string /*ip*/, int /*port*/, std::string /*variant*/) {
  return "";
}

bool IsGenericApi(const std::string& /*vendor*/, const std::string& /*model*/) { return false; }
