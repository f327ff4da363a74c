#include "recorder/device/check/user_driver.h"

#include <utility>

#include "recorder/device/check/http_probe.h"
#include "recorder/media/codecs.h"
#include "recorder/request/request_scope.h"

namespace recorder {

UserDriver::UserDriver(DriverParameters parameters) : parameters_(std::move(parameters)) {}

bool UserDriver::NeedsSourcePath() { return true; }

bool UserDriver::HasStreamPath() { return false; }

int UserDriver::GetStreamPath(std::string& path, int& /*port*/) {
  if (parameters_.sourcePath.empty()) return -1;
  path = parameters_.sourcePath;
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
  if (!asked_) return FetchPicture(address, parameters_.sourcePath, jpeg);
  jpeg = std::move(asked_->jpeg);
  return std::exchange(asked_, std::nullopt)->outcome;
}

SNAPSHOT_KIND UserDriver::SnapshotKind() {
  if (videoType_ == VIDEO_TYPE_ANY) return AskWhetherRtsp();
  const Codec* codec = CodecOfType(videoType_);
  if (codec == nullptr) return SNAPSHOT_KIND_NONE;
  if (codec->isOverHttp) return AskWhetherHttp();
  return codec->rtp ? SNAPSHOT_KIND_STREAM : SNAPSHOT_KIND_NONE;
}

/// RTSP first, then HTTP: whoever takes the picture tries one of them only.
SNAPSHOT_KIND UserDriver::AskWhetherRtsp() const {
  const CameraAddress& address = parameters_.address;
  CameraVerify check(address.host, address.port, address.user, address.password, parameters_.sourcePath, VIDEO_TYPE_ANY,
                     STREAMING_TYPE_RTSP, RTSP_PROTOCOL_AUTO);
  return check.Verify() == CAMERA_VERIFY_PASSED ? SNAPSHOT_KIND_STREAM : SNAPSHOT_KIND_HTTP_MJPEG;
}

/// HTTP, unless the address is none of HTTP's: callers say MJPEG also when they do not know.
SNAPSHOT_KIND UserDriver::AskWhetherHttp() {
  std::string jpeg;
  const Outcome outcome = FetchPicture(parameters_.address, parameters_.sourcePath, jpeg);
  RequestScope::Current().SetCause(outcome);
  asked_ = Asked{outcome, std::move(jpeg)};
  const bool isElsewhere = outcome == Outcome::kNotThisProtocol || outcome == Outcome::kNoSuchStream;
  return isElsewhere ? SNAPSHOT_KIND_STREAM : SNAPSHOT_KIND_HTTP_MJPEG;
}

}  // namespace recorder
