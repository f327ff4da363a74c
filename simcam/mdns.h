#pragma once

#include <string>

#include "simcam/group_answers.h"

namespace simcam {

/// Answers who has the service "_rtsp._tcp.local" (RFC 6762, section 6.7: asked from any port, answered to that port),
/// over the loopback interface, from construction to destruction.
class Mdns {
 public:
  /// `name` of the service's instance, 63 bytes at most, and the `port` of RTSP. Throws std::runtime_error.
  Mdns(std::string name, int port);

 private:
  [[nodiscard]] std::string Answer(const std::string& question) const;

  const std::string name_;
  const int port_;
  const GroupAnswers answers_;
};

}  // namespace simcam
