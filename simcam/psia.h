#pragma once

#include <string>

#include "simcam/camera_log.h"
#include "simcam/config.h"
#include "simcam/http_answer.h"
#include "simcam/login.h"
#include "simcam/request.h"

namespace simcam {

/// A camera's PSIA IP media device service (version 1.0), as far as it tells what the camera can do. Any thread.
class Psia {
 public:
  /// `camera` has a PSIA configuration; `port` is where it listens, for RTSP too.
  Psia(const CameraConfig& camera, int port, Login& login, CameraLog& log)
      : camera_(camera), port_(port), login_(login), log_(log) {}

  /// True for what Answer is to be asked for.
  static bool Serves(const std::string& path) { return path.starts_with("/PSIA/"); }

  /// Counts and answers a request: a document, a picture (kJpegType), or a ResponseStatus that tells a failure.
  HttpAnswer Answer(const Request& request, bool overTls, int tlsPort);

 private:
  const CameraConfig& camera_;
  const int port_;
  Login& login_;
  CameraLog& log_;
};

}  // namespace simcam
