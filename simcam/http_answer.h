#pragma once

#include <string>

#include "simcam/login.h"

namespace simcam {

constexpr const char* kJpegType = "image/jpeg";

/// An answer of one of the camera's HTTP services, before it is sent.
struct HttpAnswer {
  /// How a body is sent: as it is, with more after it for ever, or with a claimed length of 2 GB and 5 MiB of it.
  enum class Body { kWhole, kEndless, kHuge };

  int status = 200;
  std::string type;
  std::string body{};
  std::string headers{};  ///< more header lines, each with its line end
  Body sending = Body::kWhole;
};

/// The answer to a request whose login is missing or wrong.
inline HttpAnswer LoginAnswer(const Verdict& verdict) {
  return {verdict.status, "text/plain", "login\n", verdict.Headers()};
}

}  // namespace simcam
