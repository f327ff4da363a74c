#include "recorder/net/rtsp/steady_cameras.h"

#include <algorithm>

#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"

namespace recorder {

SteadyCameras& SteadyCameras::OfProcess() {
  static SteadyCameras cameras;
  return cameras;
}

bool SteadyCameras::Has(const std::string& host, int port) const {
  const std::lock_guard lock(mutex_);
  return metAt_.contains({NormalizedHost(host), port});
}

void SteadyCameras::Add(const std::string& host, int port) {
  const std::lock_guard lock(mutex_);
  metAt_[{NormalizedHost(host), port}] = ++meetings_;
  if (metAt_.size() > kMostSteadyCameras) MakeRoom();
}

void SteadyCameras::Remove(const std::string& host, int port) {
  const std::lock_guard lock(mutex_);
  metAt_.erase({NormalizedHost(host), port});
}

void SteadyCameras::MakeRoom() {
  metAt_.erase(
      std::min_element(metAt_.begin(), metAt_.end(), [](const auto& a, const auto& b) { return a.second < b.second; }));
}

}  // namespace recorder
