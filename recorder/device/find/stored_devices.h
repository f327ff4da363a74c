#pragma once

#include <vector>

#include "recorder/device/find/found_devices.h"
#include "recorder/records/records.h"

namespace recorder::find {

/// What the records say of a device.
enum class DeviceState {
  kNew,
  kKnown,  ///< it is stored
  kMoved,  ///< it is stored, but by none of its addresses
};

/// A stored camera, and what it is known again by.
struct StoredCamera {
  CameraRecord record;
  CameraIdentity identity;
};

/// The stored cameras that a device is; one that has several channels may be stored several times.
struct StoredMatch {
  DeviceState state = DeviceState::kNew;
  std::vector<CameraRecord> cameras;  ///< by id; none of a new one
};

/// Looks for a device among the stored cameras: by endpoint or serial number, or else by address where these do not
/// speak against it, and of a camera that is stored for ONVIF by the port as well. Whoever answers may claim to be
/// another one: a match is for people to judge. Pure.
StoredMatch FindStored(const FoundDevice& device, const std::vector<StoredCamera>& stored);

}  // namespace recorder::find
