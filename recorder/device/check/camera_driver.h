#pragma once

#include <memory>
#include <string>

#include "platform/device.h"
#include "recorder/net/camera_address.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// How one camera is talked to: where its stream and its pictures are, how it is checked. The functors of a
/// DeviceAPIHandler return what it returns: an int of 0 is success, and an Outcome becomes its number. Thread: one.
/// Contacts the camera in VerifyConnection and TakeSnapshot, and in GetSnapshotPath where a declaration says so.
class CameraDriver : public DPObjectBase {
 public:
  virtual bool NeedsSourcePath() = 0;
  virtual bool HasStreamPath() = 0;
  virtual int GetStreamPath(std::string& path, int& port) = 0;
  /// The camera's own check. kNoPath: it has none without a path.
  virtual Outcome VerifyConnection() = 0;
  virtual int SelectVideoType(int videoType, int streamNumber) = 0;
  virtual int GetSnapshotPath(std::string& path, int& port, int& kind) = 0;

  /// Takes a picture over HTTP with `setting` ("" for the camera's preferred one). kOk: `jpeg` holds a whole JPEG.
  virtual Outcome TakeSnapshot(const CameraAddress& address, const std::string& setting, std::string& jpeg) = 0;
};

/// What a driver is made with, but for vendor and model.
struct DriverParameters {
  CameraAddress address;
  std::string channel;
  std::string sourcePath;
};

/// The driver of a camera; null for an unknown model. Contacts a camera of a generic protocol of which no recent
/// capability file is kept.
std::unique_ptr<CameraDriver> MakeDriver(const std::string& vendor, const std::string& model,
                                         DriverParameters parameters);

}  // namespace recorder
