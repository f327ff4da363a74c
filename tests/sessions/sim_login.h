#pragma once

#include <map>
#include <sstream>
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

  Verdict Judge(std::string_view method, std::string_view uri, std::string_view authorization) {
    hasBegun_ |= !plan_.asksAtPlay || method == "PLAY";
    if (plan_.offer.empty() || !hasBegun_) return Verdict::kRight;
    if (authorization.empty()) return Verdict::kMissing;
    std::istringstream words{std::string(authorization)};
    std::string scheme, password, ofMethod, ofUri, nonce;
    int use = 0;
    words >> scheme >> password >> ofMethod >> ofUri >> use >> nonce;
    const bool isBasic = scheme == "Basic";
    wasBasicBehindDigest_ |= isBasic && hasAskedForDigest_;
    if (password != "right" || ofMethod != method || ofUri != uri) {
      ++wrong_;
      return Verdict::kWrong;
    }
    return isBasic ? Verdict::kRight : JudgeNonce(method, nonce, use);
  }

  /// The headers that ask for a login.
  std::string Challenges(bool isStale) {
    const std::string nonce = "n" + std::to_string(++asked_);
    nonces_[nonce] = 0;
    std::string headers;
    for (const char scheme : plan_.weakens&& asked_ > 1 ? "b" : plan_.offer)
      headers += "WWW-Authenticate: " + Challenge(scheme, nonce) + (isStale ? ", stale=TRUE\r\n" : "\r\n");
    hasAskedForDigest_ |= headers.find("Digest") != std::string::npos;
    return headers;
  }

  void ConnectionEnds() { nonces_.erase(nonces_.begin(), plan_.isNonceOfConnection ? nonces_.end() : nonces_.begin()); }

  int Wrong() const { return wrong_; }
  bool WasBasicBehindDigest() const { return wasBasicBehindDigest_; }
  /// True when a nonce was counted from another one, or more than one login came behind a stale one.
  bool MisusesNonces() const { return misusesNonces_; }

 private:
  static std::string Challenge(char scheme, const std::string& nonce) {
    if (scheme == 'n') return "Negotiate";
    if (scheme == 'b') return "Basic realm=\"r\"";
    const std::string digest = "Digest realm=\"r\", nonce=\"" + nonce;
    if (scheme == 'i') return digest + "\rX-Injected: 1\"";
    return digest + (scheme == 's' ? "\", algorithm=SHA-256" : scheme == 'u' ? "\", algorithm=FOO-512" : "\"");
  }

  Verdict Anew() const { return plan_.saysStale ? Verdict::kStale : Verdict::kMissing; }

  /// Of a login that is right: whether it comes in time, and for the first time.
  Verdict JudgeNonce(std::string_view method, const std::string& nonce, int use) {
    const auto known = nonces_.find(nonce);
    if (known == nonces_.end()) return Anew();
    misusesNonces_ |= known->second == 0 && use > 2;  // the first use may have been lost with its connection
    if (saidStale_ < plan_.stale) {
      misusesNonces_ |= ++saidStale_ > 2 && plan_.after401 == End::kStays;
      return Verdict::kStale;
    }
    if (method == plan_.changesNonce && (plan_.changesAlways || !hasChanged_)) {
      hasChanged_ = true;
      nonces_.clear();
      wrong_ += plan_.changesAlways && !plan_.saysStale ? 1 : 0;  // so it looks
      return Anew();
    }
    if (use <= known->second) return Verdict::kStale;  // RFC 7616 section 5.12
    known->second = use;
    return Verdict::kRight;
  }

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
