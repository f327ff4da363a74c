#pragma once

#include <string>

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

}  // namespace simcam
