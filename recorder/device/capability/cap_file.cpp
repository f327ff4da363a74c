#include <string>
#include <utility>

#include "platform/device.h"
#include "recorder/device/asked/camera_file.h"
#include "recorder/device/check/camera_driver.h"
#include "recorder/device/check/stream_probe.h"
#include "recorder/device/check/unasked.h"
#include "recorder/device/check/wanted_camera.h"
#include "recorder/device/model/built_in_models.h"
#include "recorder/device/model/model_files.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/cause_table.h"

namespace recorder {
namespace {

CameraAddress CameraAddressOf(const CamProfile& profile) {
  return {profile.ip, profile.port, profile.user, profile.pass};
}

Outcome AskForStream(const CamProfile& profile, const Model& model, CameraDriver& driver) {
  std::string path;
  int port = profile.port;
  if (driver.GetStreamPath(path, port) != 0) return Outcome::kNotUnderstood;
  const int way = model.streams.front().isOverHttp ? STREAMING_TYPE_HTTP : STREAMING_TYPE_RTSP;
  return ProbeStream({profile.ip, port, profile.user, profile.pass}, path, GetVideoType(model.presetCodec), way);
}

/// Asks the camera as a camera test does, for the stream that the model sends unless told otherwise.
Outcome TestCamera(const CamProfile& profile, const Model& model) {
  const std::unique_ptr<CameraDriver> driver =
      MakeDriver(profile.vendor, profile.model, {CameraAddressOf(profile), profile.channel, ""});
  if (!driver || driver->NeedsSourcePath()) {
    ReportUnasked(profile.vendor, profile.model, Outcome::kNoPath);
    return Outcome::kNoPath;
  }
  return driver->HasStreamPath() ? AskForStream(profile, model, *driver) : driver->VerifyConnection();
}

/// What is known of a camera, and how asking it went. `file` is "" where the built-in values must do.
struct FileAnswer {
  Outcome outcome;
  std::string file;
};

FileAnswer AskGenericCamera(const CamProfile& profile, Freshness freshness) {
  AskedModel camera = LearnCamera(profile.vendor, CameraAddressOf(profile), profile.channel, freshness);
  return {camera.outcome, std::move(camera.file)};
}

CAMCAP_FILE_RESULT ToFileResult(const FileAnswer& answer, __tag_REMOTE_CAMCAP_CMD cmd) {
  const CAMCAP_FILE_RESULT result = RowOf(answer.outcome).fileResult;
  if (result == CAMCAP_FILE_OBTAINED) return answer.file.empty() ? CAMCAP_FILE_SUBSTITUTED : result;
  const bool isFailure = cmd == REMOTE_CAMCAP_ASK_NOW || result == CAMCAP_FILE_LOGIN_REFUSED ||
                         answer.outcome == Outcome::kUnknownModel;  // nothing could stand in
  return isFailure ? result : CAMCAP_FILE_SUBSTITUTED;
}

FileAnswer AskForFile(const CamProfile& profile, __tag_REMOTE_CAMCAP_CMD cmd) {
  if (IsGenericVendor(profile.vendor)) {
    return AskGenericCamera(profile, cmd == REMOTE_CAMCAP_ASK_NOW ? Freshness::kNow : Freshness::kRecent);
  }
  const FoundModel found = FindModel(profile.vendor, profile.model);
  if (found.file.empty()) {
    ReportUnasked(profile.vendor, profile.model, Outcome::kUnknownModel);
    return {Outcome::kUnknownModel, ""};
  }
  return {TestCamera(profile, *found.model), found.file};
}

/// The cause that a caller is told. An answer that could not be kept is no answer.
Outcome CauseOf(const FileAnswer& answer) {
  const bool isLost = answer.outcome == Outcome::kOk && answer.file.empty();
  return isLost ? Outcome::kRecorderFailed : answer.outcome;
}

}  // namespace
}  // namespace recorder

int CamCapUtils::GetCamCapFile(CamProfile& profile, std::string& capFilePath, __tag_REMOTE_CAMCAP_CMD cmd) {
  recorder::RequestScope& scope = recorder::RequestScope::Current();
  scope.WorkFor({profile.vendor, profile.model, profile.ip, profile.port, profile.user});
  recorder::NameWantedCamera(profile.vendor, profile.model, recorder::CameraAddressOf(profile), std::nullopt);
  const recorder::FileAnswer answer = recorder::AskForFile(profile, cmd);
  scope.SetCause(recorder::CauseOf(answer));
  const CAMCAP_FILE_RESULT result = recorder::ToFileResult(answer, cmd);
  if (result <= CAMCAP_FILE_SUBSTITUTED) capFilePath = answer.file;
  return result;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the platform's signature has values
std::string GetRealCapFilePath(std::string vendor, std::string ip, int port, std::string variant) {
  return recorder::KeptFile(vendor, ip, port, variant);
}

bool IsGenericApi(const std::string& vendor, const std::string& /*model*/) { return recorder::IsGenericVendor(vendor); }
