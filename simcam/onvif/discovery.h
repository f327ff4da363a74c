#pragma once

#include <gio/gio.h>

#include <memory>
#include <string>
#include <thread>

#include "simcam/config.h"
#include "simcam/glib_handle.h"

namespace simcam {

/// Answers WS-Discovery probes (April 2005, as ONVIF uses it) that come over the loopback interface to the group
/// 239.255.255.250, UDP port 3702, from construction to destruction.
class Discovery {
 public:
  /// `port`: where the camera's device service is. Throws std::runtime_error.
  Discovery(const CameraConfig& camera, int port);
  ~Discovery();
  Discovery(const Discovery&) = delete;
  Discovery& operator=(const Discovery&) = delete;

 private:
  void AnswerAll();
  [[nodiscard]] std::string Matches(const std::string& probe) const;

  const CameraConfig& camera_;
  const std::string address_;
  const std::string endpoint_;  ///< a random UUID, the same for all answers
  std::unique_ptr<GSocket, UnrefGlib> socket_;
  std::unique_ptr<GCancellable, UnrefGlib> end_;
  std::jthread thread_;
};

}  // namespace simcam
