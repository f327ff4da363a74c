#pragma once

#include <optional>
#include <string>

#include "recorder/device/check/camera_driver.h"
#include "recorder/device/check/find_stream.h"

namespace recorder {

/// A camera of any make, reached by a path that the user gives: RTSP, or JPEG or MJPEG over HTTP, as its codec says.
/// Without a codec, and where MJPEG is named, GetSnapshotPath asks the camera which of them the path is.
class UserDriver : public CameraDriver {
 public:
  explicit UserDriver(DriverParameters parameters);

  bool NeedsSourcePath() override;
  bool HasStreamPath() override;
  int GetStreamPath(std::string& path, int& port) override;
  Outcome VerifyConnection() override;
  int SelectVideoType(int videoType, int streamNumber) override;
  int GetSnapshotPath(std::string& path, int& port, int& kind) override;
  Outcome TakeSnapshot(const CameraAddress& address, const std::string& setting, std::string& jpeg) override;

 private:
  using Find = FoundStream(const CameraAddress& address, const std::string& path, int videoType);

  SNAPSHOT_KIND SnapshotKind();
  SNAPSHOT_KIND Ask(Find* find);

  const DriverParameters parameters_;
  int videoType_ = VIDEO_TYPE_ANY;
  std::optional<FoundStream> asked_;  // whoever takes the picture next need not ask again
};

}  // namespace recorder
