#pragma once

#include <memory>
#include <string>

#include "recorder/device/check/camera_driver.h"
#include "recorder/device/model/model.h"

namespace recorder {

/// A camera that a model file describes.
class ModelDriver : public CameraDriver {
 public:
  ModelDriver(std::shared_ptr<const Model> model, DriverParameters parameters);

  bool NeedsSourcePath() override;
  bool HasStreamPath() override;
  int GetStreamPath(std::string& path, int& port) override;
  Outcome VerifyConnection() override;
  int SelectVideoType(int videoType, int streamNumber) override;
  int GetSnapshotPath(std::string& path, int& port, int& kind) override;
  Outcome TakeSnapshot(const CameraAddress& address, const std::string& setting, std::string& jpeg) override;

 private:
  Outcome TakePictureOf(const ModelStream& other, CameraAddress camera, std::string& jpeg) const;
  const ModelStream* OtherStream() const;
  void RememberStreams(const std::string& usualPath, int usualPort) const;
  void RememberKeyFrameCall(const std::string& codec, const std::string& path, int port) const;
  std::string PathOf(const ModelStream& stream) const;
  std::string HttpSnapshotPath(const std::string& setting) const;
  void UsePort(const ModelPath& path, int& port) const;
  std::string PreferredSetting() const;

  const std::shared_ptr<const Model> model_;
  const DriverParameters parameters_;
  const std::string channel_;
  int videoType_ = VIDEO_TYPE_ANY;
};

}  // namespace recorder
