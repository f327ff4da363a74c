#pragma once

#include <chrono>
#include <string>
#include <unordered_map>

#include "recorder/records/records.h"

namespace recorder {

/// The login of a camera as others may have it alike: host, port and user. A camera with many channels has a record for
/// each, and locks out the user of all of them.
std::string LoginOf(const CameraRecord& camera);

/// The logins that cameras have refused, which nobody tries unasked for a pause, whatever record they are of. Thread:
/// one.
class RefusedLogins {
 public:
  using Time = std::chrono::milliseconds;  ///< since some moment that stays the same

  static constexpr Time kLeastPause = std::chrono::hours(1);

  explicit RefusedLogins(Time pause = kLeastPause) : pause_(pause) {}

  /// Takes a refusal of that moment. The login "" is none.
  void Add(const std::string& login, Time at);
  /// The login may work now.
  void Forget(const std::string& login) { until_.erase(login); }
  /// Forgets those whose pause is over.
  void ForgetSpent(Time now);
  bool Holds(const std::string& login, Time now) const;

 private:
  Time pause_;
  std::unordered_map<std::string, Time> until_;
};

/// Whether nobody asks the camera unasked: its own login was refused at the last contact, or that of a record of the
/// same login within the pause. An edit after which the login may work ends both. Throws what Records throws.
bool IsLoginRefused(const Records& records, const CameraRecord& camera);

}  // namespace recorder
