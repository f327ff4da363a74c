#pragma once

#include <memory>
#include <string>

#include "platform/device.h"
#include "recorder/device/check/camera_driver.h"

/// What stands behind the platform's object of one camera: its driver.
struct DeviceAPIHandler::Impl {
  std::unique_ptr<recorder::CameraDriver> driver;  ///< null: not loaded, or an unknown model
  std::string vendor;
  std::string model;
  bool lacksPath = false;  ///< that of the stream, which the user has to give
};
