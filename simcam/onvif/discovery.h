#pragma once

#include <string>

#include "simcam/config.h"
#include "simcam/group_answers.h"

namespace simcam {

/// Answers WS-Discovery probes (April 2005, as ONVIF uses it) that come over the loopback interface to the group
/// 239.255.255.250, UDP port 3702, from construction to destruction.
class Discovery {
 public:
  /// `port`: where the camera's device service is. Throws std::runtime_error.
  Discovery(const CameraConfig& camera, int port);

 private:
  [[nodiscard]] std::string Matches(const std::string& probe) const;

  const CameraConfig& camera_;
  const std::string address_;
  const std::string endpoint_;  ///< a UUID
  const GroupAnswers answers_;
};

}  // namespace simcam
