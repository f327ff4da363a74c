#pragma once

#include <array>
#include <chrono>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "recorder/utility/outcome.h"
#include "recorder/utility/secrets.h"

namespace recorder {

using Clock = std::chrono::steady_clock;

/// How long the camera work of one request may take, from its first contact with a camera on.
struct CameraLimits {
  std::chrono::milliseconds test{10'000};     ///< a test, a size, a capability file
  std::chrono::milliseconds picture{15'000};  ///< a picture
};

/// Sets the limits of this process. Call once, before the first request.
void SetCameraLimits(const CameraLimits& limits);
const CameraLimits& GetCameraLimits();

/// What one request knows about the cameras that it contacts: the deadline that its contacts share, the failures that
/// later calls get again without another contact (so that one wrong password is one login attempt), and the stored
/// password that was lent to it. `net/` asks it before every connection and every login.
///
/// Owner:   the request process opens one for each request; any other thread (a batch worker) gets one of its own at
///          first use, which ends with the thread.
/// Thread:  a scope belongs to one thread.
/// Time:    steady clock.
/// Secrets: holds no password, only digests under a random key of its own.
class RequestScope {
 public:
  /// The calling thread's scope.
  static RequestScope& Current();

  /// Opens a scope for the calling thread with `limit` for its camera work; the destructor restores the one before.
  explicit RequestScope(std::chrono::milliseconds limit);
  ~RequestScope();
  RequestScope(const RequestScope&) = delete;
  RequestScope& operator=(const RequestScope&) = delete;

  /// When camera work must end. The first call starts the clock.
  Clock::time_point Deadline();

  /// Lends the stored password of the camera at `host` and `port` to this request, which must have named the record's
  /// vendor and model: by AllowPort the model adds ports. A request may borrow several; an empty one is ignored.
  void LendPassword(std::string password, const std::string& host, int port);

  /// Refuses every contact from now on: the request counts on a stored password that it was not lent, and a contact
  /// without it would be a wrong login, of which cameras allow few.
  void RefuseLogins() { refusesLogins_ = true; }

  /// Adds a port of a lent password's camera that the camera itself or its own model named; ignored for another host.
  void AllowPort(const std::string& host, int port);

  /// Asked before contacting `host`: the failure to report without a contact, if there is one. That is a spent
  /// deadline, an earlier refused login of `user` or time-out at this host, or RefuseLogins or a lent password that is
  /// not for this address (a refused login). Host names and addresses are compared as text, without regard to letter
  /// case, brackets or a final dot.
  std::optional<Outcome> Refusal(const std::string& host, int port, const std::string& user,
                                 const std::string& password) const;

  /// Remembers how a contact failed, if that answers later contacts too (kLoginRefused, kClockUnknown, kTimedOut).
  void Remember(const std::string& host, const std::string& user, Outcome outcome);

  /// How asking the camera that `key` stands for failed in this request, if it did.
  std::optional<Outcome> FailedAsking(const std::string& key) const;
  void RememberFailedAsking(const std::string& key, Outcome outcome) { failedAskings_.try_emplace(key, outcome); }

 private:
  using Digest = std::array<unsigned char, 32>;
  struct LentPassword {
    Digest digest;
    std::string host;
    std::set<int> ports;
  };

  Digest DigestOf(const std::string& password) const;
  bool IsLentElsewhere(const std::string& host, int port, const std::string& password) const;

  std::chrono::milliseconds limit_;
  std::optional<Clock::time_point> deadline_;
  std::optional<SecretKey> key_;  // made with the first lent password
  bool refusesLogins_ = false;
  std::vector<LentPassword> lent_;
  std::map<std::pair<std::string, std::string>, Outcome> failures_;  // by host and user
  std::map<std::string, Outcome> failedAskings_;
  RequestScope* previous_;
};

}  // namespace recorder
