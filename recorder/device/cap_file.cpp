#include <algorithm>
#include <string>
#include <utility>

#include "platform/device.h"
#include "recorder/device/device_api.h"
#include "recorder/device/model_files.h"
#include "recorder/device/stream_probe.h"
#include "recorder/utility/translate.h"

namespace recorder {
namespace {

constexpr std::pair<Outcome, CAMCAP_FILE_RESULT> kFileResults[] = {
    {Outcome::kOk, CAMCAP_FILE_OBTAINED},
    {Outcome::kUnreachable, CAMCAP_FILE_UNREACHABLE},
    {Outcome::kTimedOut, CAMCAP_FILE_UNREACHABLE},
    {Outcome::kLoginRefused, CAMCAP_FILE_LOGIN_REFUSED},
    {Outcome::kNoSuchStream, CAMCAP_FILE_NO_SERVICE},
    {Outcome::kNotThisProtocol, CAMCAP_FILE_NO_SERVICE},
};

Outcome AskForStream(const CamProfile& profile, const Model& model, Device& device) {
  std::string path;
  int port = profile.port;
  if (device.GetStreamPath(path, port) != 0) return Outcome::kNotUnderstood;
  const auto codec = std::find_if(model.codecs.begin(), model.codecs.end(),
                                  [&](const auto& candidate) { return candidate.name == model.presetCodec; });
  return ProbeStream({profile.ip, port, profile.user, profile.pass}, path, GetVideoType(codec->name),
                     GetStreamingType(codec->streamTypes.front()));
}

/// Asks the camera as a camera test does, for the stream that the model sends unless told otherwise.
Outcome AskCamera(const CamProfile& profile, const Model& model) {
  const std::unique_ptr<Device> device = MakeDevice(
      profile.vendor, profile.model, {{profile.ip, profile.port, profile.user, profile.pass}, profile.channel, ""});
  if (!device || device->NeedsSourcePath()) return Outcome::kNotUnderstood;
  return device->HasStreamPath() ? AskForStream(profile, model, *device)
                                 : static_cast<Outcome>(device->VerifyConnection());
}

}  // namespace
}  // namespace recorder

int CamCapUtils::GetCamCapFile(CamProfile& profile, std::string& capFilePath, __tag_REMOTE_CAMCAP_CMD cmd) {
  const recorder::FoundModel found = recorder::FindModel(profile.vendor, profile.model);
  if (found.file.empty()) return CAMCAP_FILE_NOT_UNDERSTOOD;
  const recorder::Outcome outcome = recorder::AskCamera(profile, *found.model);
  CAMCAP_FILE_RESULT result = recorder::Translate(recorder::kFileResults, outcome, CAMCAP_FILE_NOT_UNDERSTOOD);
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
