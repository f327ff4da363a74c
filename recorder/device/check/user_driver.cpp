#include "recorder/device/check/user_driver.h"

#include <utility>

#include "recorder/device/check/http_probe.h"
#include "recorder/media/codecs.h"
#include "recorder/net/source_path.h"
#include "recorder/request/request_scope.h"

namespace recorder {

UserDriver::UserDriver(DriverParameters parameters) : parameters_(std::move(parameters)) {}

bool UserDriver::NeedsSourcePath() { return true; }

bool UserDriver::HasStreamPath() { return false; }

int UserDriver::GetStreamPath(std::string& path, int& port) {
  if (parameters_.sourcePath.empty()) return -1;
  path = PutTogether(parameters_.sourcePath, parameters_.address);
  port = parameters_.address.port;
  return 0;
}

Outcome UserDriver::VerifyConnection() { return Outcome::kNoPath; }

int UserDriver::SelectVideoType(int videoType, int /*streamNumber*/) {
  videoType_ = videoType;
  return 0;
}

int UserDriver::GetSnapshotPath(std::string& path, int& port, int& kind) {
  if (GetStreamPath(path, port) != 0) return -1;
  kind = SnapshotKind();
  if (kind == SNAPSHOT_KIND_NONE) RequestScope::Current().SetCause(Outcome::kNoVideo);
  return kind == SNAPSHOT_KIND_NONE ? -1 : 0;
}

Outcome UserDriver::TakeSnapshot(const CameraAddress& address, const std::string& /*setting*/, std::string& jpeg) {
  CameraAddress camera = address;
  camera.isTls = parameters_.address.isTls;
  if (!asked_) return FetchPicture(camera, parameters_.sourcePath, jpeg);
  jpeg = std::move(asked_->jpeg);
  return std::exchange(asked_, std::nullopt)->outcome;
}

/// By RTSP first where no codec is named, by HTTP first where MJPEG is: callers say that also when they do not know.
SNAPSHOT_KIND UserDriver::SnapshotKind() {
  if (videoType_ == VIDEO_TYPE_ANY) return Ask(FindByRtspFirst);
  const Codec* codec = CodecOfType(videoType_);
  if (codec == nullptr) return SNAPSHOT_KIND_NONE;
  if (codec->isOverHttp) return Ask(FindByHttpFirst);
  return codec->rtp ? SNAPSHOT_KIND_STREAM : SNAPSHOT_KIND_NONE;
}

/// Whoever takes the picture tries one protocol only. It gets what was found out from TakeSnapshot, a failure too.
SNAPSHOT_KIND UserDriver::Ask(Find* find) {
  FoundStream found = find(parameters_.address, parameters_.sourcePath, VIDEO_TYPE_ANY);
  if (found.outcome == Outcome::kOk && !found.isOverHttp) return SNAPSHOT_KIND_STREAM;
  if (found.outcome != Outcome::kOk) LogUnusable(parameters_.address, found.outcome);
  asked_ = std::move(found);
  return SNAPSHOT_KIND_HTTP_MJPEG;
}

}  // namespace recorder
