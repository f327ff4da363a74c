#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/device.h"
#include "recorder/net/camera_address.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// The device-support object of one camera: what the functors of a DeviceAPIHandler call.
/// Thread: one. Contacts the camera in VerifyConnection and TakeSnapshot, and in GetSnapshotPath where a declaration
/// says so.
class Device : public DPObjectBase {
 public:
  virtual bool NeedsSourcePath() = 0;
  virtual bool HasStreamPath() = 0;
  virtual int GetStreamPath(std::string& path, int& port) = 0;
  /// The device's own check: the number of a recorder::Outcome. kNoPath: it has none without a path.
  virtual int VerifyConnection() = 0;
  virtual int SelectVideoType(int videoType, int streamNumber) = 0;
  virtual int GetSnapshotPath(std::string& path, int& port, int& kind) = 0;

  /// Takes a picture over HTTP with `setting` ("" for the camera's preferred one). kOk: `jpeg` holds a whole JPEG.
  virtual Outcome TakeSnapshot(const CameraAddress& address, const std::string& setting, std::string& jpeg) = 0;
};

/// What a DeviceAPIHandler is loaded with, but for vendor and model.
struct DeviceParameters {
  CameraAddress address;
  std::string channel;
  std::string sourcePath;
};

/// The device object of a camera; null for an unknown model. Contacts a camera of a generic protocol of which no recent
/// capability file is kept.
std::unique_ptr<Device> MakeDevice(const std::string& vendor, const std::string& model, DeviceParameters parameters);

}  // namespace recorder

struct DeviceAPIHandler::Impl {
  std::unique_ptr<recorder::Device> device;
  std::string vendor;
  std::string model;
  bool lacksPath = false;  ///< that of the stream, which the user has to give
};
