#pragma once

#include <map>
#include <string>
#include <string_view>

#include "tests/sessions/camera_plan.h"

namespace sessions {

inline constexpr const char* kUser = "admin";
inline constexpr const char* kPassword = "secret";

/// How a simulated camera asks for logins and judges them, by the standards and not by the recorder's code.
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

 private:
  struct Nonce {
    std::string realm;
    std::string lastCount;
  };

  std::string Challenge(char scheme, const std::string& nonce, bool isStale) const;
  bool IsRight(std::string_view method, std::string_view uri, std::string_view authorization);
  Verdict Anew() const { return plan_.saysStale ? Verdict::kStale : Verdict::kMissing; }
  Verdict JudgeNonce(std::string_view method, std::string_view authorization);

  const LoginPlan& plan_;
  std::map<std::string, Nonce, std::less<>> nonces_;
  int asked_ = 0;
  int wrong_ = 0;
  std::size_t saidStale_ = 0;
  bool hasBegun_ = false;
  bool hasChanged_ = false;
  bool hasAskedForDigest_ = false;
  bool wasBasicBehindDigest_ = false;
};

}  // namespace sessions
