#pragma once

#include <string>

#include "recorder/device/device_api.h"

namespace recorder {

/// A camera of any make, reached by a path that the user gives: RTSP, or JPEG or MJPEG over HTTP, as its codec says.
/// Without a codec, GetSnapshotPath asks the camera whether the path is an RTSP stream.
class UserDevice : public Device {
 public:
  explicit UserDevice(DeviceParameters parameters);

  bool NeedsSourcePath() override;
  bool HasStreamPath() override;
  int GetStreamPath(std::string& path, int& port) override;
  int VerifyConnection() override;
  int SelectVideoType(int videoType, int streamNumber) override;
  int GetSnapshotPath(std::string& path, int& port, int& kind) override;
  std::string HttpSnapshotPath(const std::string& setting) override;

 private:
  SNAPSHOT_KIND SnapshotKind() const;
  SNAPSHOT_KIND AskForKind() const;
  SNAPSHOT_KIND AskWhetherHttp() const;

  const DeviceParameters parameters_;
  int videoType_ = VIDEO_TYPE_ANY;
};

}  // namespace recorder
