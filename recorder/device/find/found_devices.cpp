#include "recorder/device/find/found_devices.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "recorder/utility/limits.h"
#include "recorder/utility/log.h"

namespace recorder::find {
namespace {

bool IsSame(const std::string& one, const std::string& other) { return !one.empty() && one == other; }
bool Differ(const std::string& one, const std::string& other) { return !one.empty() && !other.empty() && one != other; }

bool IsAbout(const HeardDevice& heard, const FoundDevice& device) {
  if (IsSame(heard.endpoint, device.endpoint) || IsSame(heard.serial, device.serial)) return true;
  if (Differ(heard.endpoint, device.endpoint) || Differ(heard.serial, device.serial)) return false;
  return std::ranges::find(device.addresses, heard.address) != device.addresses.end();
}

void AddAddress(const std::string& address, FoundDevice& device) {
  const bool isKnown = std::ranges::find(device.addresses, address) != device.addresses.end();
  if (!isKnown && device.addresses.size() < kMostFoundAddresses) device.addresses.push_back(address);
}

/// What a camera says over ONVIF is what people find again in its settings.
void Add(const HeardDevice& heard, FoundDevice& device) {
  AddAddress(heard.address, device);
  const bool isFirstOfOnvif = heard.by == HeardBy::kOnvif && !device.by.contains(HeardBy::kOnvif);
  const auto take = [&](auto& known, const auto& said, const auto& nothing) {
    if (said != nothing && (isFirstOfOnvif || known == nothing)) known = said;
  };
  take(device.port, heard.port, 0);
  take(device.name, heard.name, "");
  take(device.maker, heard.maker, "");
  take(device.model, heard.model, "");
  take(device.endpoint, heard.endpoint, "");
  take(device.serial, heard.serial, "");
  take(device.openPorts, heard.openPorts, std::vector<int>());
  device.by.insert(heard.by);
}

}  // namespace

/// Who sends tells of as many as it likes: one sender must not fill the list.
bool FoundDevices::MayAdd(const std::string& address) {
  const auto isThere = [&](const FoundDevice& device) {
    return std::ranges::find(device.addresses, address) != device.addresses.end();
  };
  const auto ofSender = static_cast<std::size_t>(std::ranges::count_if(devices_, isThere));
  const bool mayAdd = devices_.size() < kMostFoundCameras && ofSender < kMostFoundAtAddress;
  if (!mayAdd && !std::exchange(hasLeftOut_, true)) {
    LogFailure("More devices were heard of than are listed, the first one left out at " + address + ".");
  }
  return mayAdd;
}

const FoundDevice* FoundDevices::Take(const HeardDevice& heard) {
  auto device = std::ranges::find_if(devices_, [&](const FoundDevice& one) { return IsAbout(heard, one); });
  if (device == devices_.end()) {
    if (!MayAdd(heard.address)) return nullptr;
    devices_.push_back({.number = static_cast<int>(devices_.size()) + 1});
    device = devices_.end() - 1;
  }
  const FoundDevice before = *device;
  Add(heard, *device);
  return *device == before ? nullptr : &*device;
}

}  // namespace recorder::find
