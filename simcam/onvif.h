#pragma once

#include <optional>
#include <string>

#include "simcam/camera_log.h"
#include "simcam/config.h"
#include "simcam/http_answer.h"
#include "simcam/login.h"
#include "simcam/request.h"
#include "simcam/soap.h"
#include "simcam/token_login.h"

namespace simcam {

/// A camera's ONVIF services: device, media 1 and 2, device IO, analytics and events, as far as its configuration has
/// them, and only what is asked to learn what the camera can do. Any thread.
class Onvif {
 public:
  /// `camera` has an ONVIF configuration; `port` is where it listens.
  Onvif(const CameraConfig& camera, int port, Login& login, CameraLog& log)
      : camera_(camera), port_(port), login_(login), log_(log) {}

  /// True for what Answer is to be asked for.
  static bool Serves(const std::string& path) { return path.starts_with("/onvif/"); }

  /// Counts and answers a request; one that came over TLS came to `tlsPort`.
  HttpAnswer Answer(const Request& request, bool overTls, int tlsPort);

 private:
  [[nodiscard]] HttpAnswer Fault(const SoapFault& fault, const std::string& headers = {}) const;
  std::optional<HttpAnswer> Refusal(const Request& request, const SoapRequest& soap);

  const CameraConfig& camera_;
  const int port_;
  Login& login_;
  CameraLog& log_;
  TokenLogin tokens_{camera_};
};

}  // namespace simcam
