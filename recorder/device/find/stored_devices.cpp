#include "recorder/device/find/stored_devices.h"

#include <algorithm>

#include "recorder/device/model/built_in_models.h"
#include "recorder/utility/text.h"

namespace recorder::find {
namespace {

enum class Sameness { kSame, kUnknown, kOther };

Sameness Compare(const std::string& one, const std::string& other) {
  if (one.empty() || other.empty()) return Sameness::kUnknown;
  return one == other ? Sameness::kSame : Sameness::kOther;
}

Sameness Compare(const FoundDevice& device, const CameraIdentity& identity) {
  const Sameness byEndpoint = Compare(device.endpoint, identity.endpoint);
  return byEndpoint == Sameness::kUnknown ? Compare(device.serial, identity.serial) : byEndpoint;
}

bool IsAt(const FoundDevice& device, const std::string& host) {
  return std::ranges::find(device.addresses, NormalizedHost(host)) != device.addresses.end();
}

bool HasPortOf(const FoundDevice& device, const CameraRecord& record) {
  const bool isOnvif = record.vendor == kOnvifVendor && device.by.contains(HeardBy::kOnvif);
  return !isOnvif || device.port == record.port;
}

bool IsStoredAs(const FoundDevice& device, const StoredCamera& camera) {
  const Sameness sameness = Compare(device, camera.identity);
  if (sameness != Sameness::kUnknown) return sameness == Sameness::kSame;
  return IsAt(device, camera.record.host) && HasPortOf(device, camera.record);
}

}  // namespace

StoredMatch FindStored(const FoundDevice& device, const std::vector<StoredCamera>& stored) {
  StoredMatch match;
  bool hasMoved = true;
  for (const StoredCamera& camera : stored) {
    if (!IsStoredAs(device, camera)) continue;
    match.cameras.push_back(camera.record);
    // Of a name it is not known whether it leads to the device by now.
    const bool isThere = IsAt(device, camera.record.host) || !IsNumericAddress(camera.record.host);
    hasMoved = hasMoved && !isThere;
  }
  if (!match.cameras.empty()) match.state = hasMoved ? DeviceState::kMoved : DeviceState::kKnown;
  return match;
}

}  // namespace recorder::find
