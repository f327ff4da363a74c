#pragma once

#include "simcam/http_service.h"

namespace simcam {

/// A camera's PSIA IP media device service (version 1.0), as far as it tells what the camera can do. It answers a
/// document, a picture (kJpegType), or a ResponseStatus that tells a failure.
class Psia : public HttpService {
 public:
  /// `camera` has a PSIA configuration.
  Psia(const CameraConfig& camera, Login& login, CameraLog& log)
      : HttpService(camera, "/PSIA/", camera.psia->trouble, login, log) {}

 private:
  HttpAnswer AnswerWell(const Request& request, const Entrance& entrance) override;
};

}  // namespace simcam
