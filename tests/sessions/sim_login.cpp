#include "tests/sessions/sim_login.h"

#include <sstream>

namespace sessions {

SimLogin::Verdict SimLogin::Judge(std::string_view method, std::string_view uri, std::string_view authorization) {
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

/// Of a login that is right: whether it comes in time, and for the first time.
SimLogin::Verdict SimLogin::JudgeNonce(std::string_view method, const std::string& nonce, int use) {
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

std::string SimLogin::Challenges(bool isStale) {
  const std::string nonce = "n" + std::to_string(++asked_);
  nonces_[nonce] = 0;
  std::string headers;
  for (const char scheme : plan_.weakens&& asked_ > 1 ? "b" : plan_.offer)
    headers += "WWW-Authenticate: " + Challenge(scheme, nonce) + (isStale ? ", stale=TRUE\r\n" : "\r\n");
  hasAskedForDigest_ |= headers.find("Digest") != std::string::npos;
  return headers;
}

std::string SimLogin::Challenge(char scheme, const std::string& nonce) {
  if (scheme == 'n') return "Negotiate";
  if (scheme == 'b') return "Basic realm=\"r\"";
  const std::string digest = "Digest realm=\"r\", nonce=\"" + nonce;
  if (scheme == 'i') return digest + "\rX-Injected: 1\"";
  return digest + (scheme == 's' ? "\", algorithm=SHA-256" : scheme == 'u' ? "\", algorithm=FOO-512" : "\"");
}

}  // namespace sessions
