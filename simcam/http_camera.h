#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "simcam/camera_log.h"
#include "simcam/config.h"
#include "simcam/http_service.h"
#include "simcam/login.h"
#include "simcam/socket.h"
#include "simcam/sync_points.h"

namespace simcam {

/// A camera's HTTP/1.1: snapshots, motion JPEG, fixed pages, ONVIF, PSIA. Any thread.
class HttpCamera {
 public:
  /// `port` is where the camera listens.
  HttpCamera(const CameraConfig& camera, int port, Login& login, CameraLog& log, SyncPoints& syncPoints);

  /// Answers requests until either side ends the connection; `received` has been read already. `overTls`: it came
  /// inside TLS.
  void Serve(const Socket& connection, std::string received, bool overTls = false);

  /// Where the fault redirectOther leads: an address. To be called before Serve.
  void SetRedirect(std::string address) { redirect_ = std::move(address); }

 private:
  class Conversation;

  const CameraConfig& camera_;
  const int port_;
  Login& login_;
  CameraLog& log_;
  std::vector<std::unique_ptr<HttpService>> services_;
  std::string redirect_;
};

}  // namespace simcam
