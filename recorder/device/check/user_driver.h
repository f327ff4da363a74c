#pragma once

#include <optional>
#include <string>

#include "recorder/device/check/camera_driver.h"

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
  /// What came of asking for a picture over HTTP: whoever takes the picture next need not ask again.
  struct Asked {
    Outcome outcome;
    std::string jpeg;
  };

  SNAPSHOT_KIND SnapshotKind();
  SNAPSHOT_KIND AskWhetherRtsp() const;
  SNAPSHOT_KIND AskWhetherHttp();

  const DriverParameters parameters_;
  int videoType_ = VIDEO_TYPE_ANY;
  std::optional<Asked> asked_;
};

}  // namespace recorder
