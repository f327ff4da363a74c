#pragma once

#include <set>
#include <string>
#include <vector>

#include "recorder/device/find/heard_device.h"

namespace recorder::find {

/// A device, with all that was heard of it. Texts as HeardDevice has them.
struct FoundDevice {
  int number = 0;  ///< from 1, in the order of being heard first
  std::vector<std::string> addresses = {};
  int port = 0;  ///< of its ONVIF service, if it has one
  std::string name = {};
  std::string maker = {};
  std::string model = {};
  std::string endpoint = {};
  std::string serial = {};
  std::set<HeardBy> by = {};
  std::vector<int> openPorts = {};  ///< that took a connection

  bool operator==(const FoundDevice&) const = default;
};

/// Makes one entry a device of what is heard: by endpoint or serial number, or else by address where these do not speak
/// against it. One thread.
class FoundDevices {
 public:
  /// The device that `heard` is about; null when nothing new was heard of it, or there are kMostFoundCameras already,
  /// or kMostFoundAtAddress behind its address; that is logged once. Good until the next call.
  const FoundDevice* Take(const HeardDevice& heard);

 private:
  bool MayAdd(const std::string& address);

  bool hasLeftOut_ = false;
  std::vector<FoundDevice> devices_;
};

}  // namespace recorder::find
