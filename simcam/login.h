#pragma once

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "simcam/camera_log.h"
#include "simcam/config.h"

namespace simcam {

/// What a camera thinks of a request's login.
struct Verdict {
  int status = 200;                     ///< 200, 401 or 403
  std::vector<std::string> challenges;  ///< for 401: the values of WWW-Authenticate, a header line each

  /// The challenges as header lines, each with its line end.
  [[nodiscard]] std::string Headers() const;
};

/// A camera's logins: Basic (RFC 7617) and Digest (RFC 7616; without qop as in RFC 2069), the same for RTSP and HTTP.
/// Any thread.
class Login {
 public:
  Login(const CameraConfig& camera, CameraLog& log) : camera_(camera), log_(log) {}

  /// Judges one request by its method, target as sent, and Authorization header (empty: none), and counts it.
  Verdict Check(const std::string& method, const std::string& target, const std::string& authorization);
  /// Counts a login that was judged by a scheme of the caller's; refuses a right one too if the user is locked out.
  Verdict Settle(bool right);

 private:
  enum class Answer { kRight, kWrong, kStale };

  [[nodiscard]] bool Offers(Scheme scheme) const;
  [[nodiscard]] bool BasicIsRight(const std::string& credentials) const;
  Answer JudgeDigest(const std::string& method, const std::string& target, const std::string& parameters);
  Answer JudgeNonce(const std::string& nonce, const std::string& count);
  Answer Judge(const std::string& method, const std::string& target, const std::string& authorization);
  Verdict Conclude(Answer answer);
  std::vector<std::string> Challenges(bool stale);
  [[nodiscard]] std::string Challenge(Scheme scheme, const std::string& nonce, bool stale) const;

  const CameraConfig& camera_;
  CameraLog& log_;
  std::mutex mutex_;
  std::map<std::string, unsigned long> nonces_;  ///< each nonce given out, with the last count that came with it
  bool staleSent_ = false;
  int wrongLogins_ = 0;
};

}  // namespace simcam
