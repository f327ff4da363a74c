#pragma once

#include <map>
#include <string>
#include <string_view>

#include "tests/sessions/camera_plan.h"

namespace sessions {

/// How a simulated camera asks for logins and judges them. A login is "scheme right|wrong method address use nonce":
/// for what a request is made, not how it is hashed.
class SimLogin {
 public:
  enum class Verdict { kRight, kMissing, kWrong, kStale };

  explicit SimLogin(const LoginPlan& plan) : plan_(plan) {}

  Verdict Judge(std::string_view method, std::string_view uri, std::string_view authorization);
  /// The headers that ask for a login.
  std::string Challenges(bool isStale);
  void ConnectionEnds() { nonces_.erase(nonces_.begin(), plan_.isNonceOfConnection ? nonces_.end() : nonces_.begin()); }

  int Wrong() const { return wrong_; }
  bool WasBasicBehindDigest() const { return wasBasicBehindDigest_; }
  /// True when a nonce was counted from another one, or more than one login came behind a stale one.
  bool MisusesNonces() const { return misusesNonces_; }

 private:
  static std::string Challenge(char scheme, const std::string& nonce);
  Verdict Anew() const { return plan_.saysStale ? Verdict::kStale : Verdict::kMissing; }
  Verdict JudgeNonce(std::string_view method, const std::string& nonce, int use);

  const LoginPlan& plan_;
  std::map<std::string, int> nonces_;  // and the last use of each
  int asked_ = 0;
  int wrong_ = 0;
  std::size_t saidStale_ = 0;
  bool hasBegun_ = false;
  bool hasChanged_ = false;
  bool hasAskedForDigest_ = false;
  bool wasBasicBehindDigest_ = false;
  bool misusesNonces_ = false;
};

}  // namespace sessions
