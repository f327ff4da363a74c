#pragma once

#include <optional>

#include "simcam/http_service.h"
#include "simcam/onvif/soap.h"
#include "simcam/onvif/token_login.h"
#include "simcam/sync_points.h"

namespace simcam {

/// A camera's ONVIF services: device, media 1 and 2, device IO, analytics and events, as far as its configuration has
/// them, and only what is asked to learn what the camera can do, and for a key frame.
class Onvif : public HttpService {
 public:
  /// `camera` has an ONVIF configuration.
  Onvif(const CameraConfig& camera, Login& login, CameraLog& log, SyncPoints& syncPoints)
      : HttpService(camera, "/onvif/", camera.onvif->trouble, login, log), syncPoints_(syncPoints) {}

 private:
  void Count(const Request& request) override;
  HttpAnswer AnswerWell(const Request& request, const Entrance& entrance) override;
  std::optional<HttpAnswer> Refusal(const Request& request, const std::optional<UsernameToken>& token);

  SyncPoints& syncPoints_;
  TokenLogin tokens_{camera_};
};

}  // namespace simcam
