#pragma once

#include <string>

#include "simcam/camera_log.h"
#include "simcam/config.h"
#include "simcam/login.h"
#include "simcam/socket.h"

namespace simcam {

/// A camera's HTTP/1.1: snapshots, motion JPEG, fixed pages, and /sim/log for tests. Any thread.
class HttpCamera {
 public:
  HttpCamera(const CameraConfig& camera, Login& login, CameraLog& log) : camera_(camera), login_(login), log_(log) {}

  /// Answers requests until either side ends the connection; `received` has been read already.
  void Serve(const Socket& connection, std::string received);

  /// Where the fault redirectOther leads: an address. To be called before Serve.
  void SetRedirect(std::string address) { redirect_ = std::move(address); }

 private:
  const CameraConfig& camera_;
  Login& login_;
  CameraLog& log_;
  std::string redirect_;
};

}  // namespace simcam
