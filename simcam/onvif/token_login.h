#pragma once

#include <chrono>
#include <mutex>
#include <set>
#include <string>

#include "simcam/config.h"
#include "simcam/onvif/soap.h"

namespace simcam {

/// A camera's logins by WS-Security (UsernameToken profile 1.0): a password digest alone, made at the camera's own time
/// and never seen before. Any thread.
class TokenLogin {
 public:
  explicit TokenLogin(const CameraConfig& camera) : camera_(camera) {}

  /// True for a right login, which is used up by that.
  bool Accept(const UsernameToken& token);

 private:
  [[nodiscard]] bool IsFresh(const UsernameToken& token) const;

  const CameraConfig& camera_;
  std::mutex mutex_;
  std::set<std::string> nonces_;  ///< all that came, as bytes
};

/// What a camera takes for the time.
std::chrono::sys_seconds CameraTime(const OnvifConfig& onvif);

}  // namespace simcam
