#include "recorder/records/refused_logins.h"

#include <algorithm>
#include <cstdint>

#include "recorder/utility/text.h"
#include "recorder/utility/watch_clock.h"

namespace recorder {

std::string LoginOf(const CameraRecord& camera) {
  return NormalizedHost(camera.host) + ' ' + std::to_string(camera.port) + ' ' + camera.user;
}

void RefusedLogins::Add(const std::string& login, Time at) {
  if (login.empty()) return;
  Time& until = until_[login];
  until = std::max(until, at + pause_);
}

void RefusedLogins::ForgetSpent(Time now) {
  std::erase_if(until_, [now](const auto& login) { return login.second <= now; });
}

bool RefusedLogins::Holds(const std::string& login, Time now) const {
  const auto refused = until_.find(login);
  return refused != until_.end() && refused->second > now;
}

bool IsLoginRefused(const Records& records, const CameraRecord& camera) {
  const std::int64_t now = WatchClock::Seconds();
  RefusedLogins logins;
  for (const RefusedCamera& refused : records.RefusedCameras()) {
    if (refused.id == camera.id) return true;
    logins.Add(refused.login, std::chrono::seconds(std::min(refused.since, now)));  // the clock may have jumped
  }
  return logins.Holds(LoginOf(camera), std::chrono::seconds(now));
}

}  // namespace recorder
