#pragma once

#include <optional>
#include <string>
#include <utility>

#include "recorder/net/camera_address.h"
#include "recorder/net/rtsp/rtsp_client.h"
#include "recorder/utility/outcome.h"

namespace recorder::find {

/// Asks one RTSP port of a camera for one path after the other, over one connection and with one login as long as the
/// camera keeps it open. Within the thread's RequestScope.
class PathHunt {
 public:
  explicit PathHunt(CameraAddress camera) : camera_(std::move(camera)) {}

  /// kOk: the camera has a stream there, of a codec that the recorder knows. kNoVideo: of another one.
  Outcome Ask(const std::string& path);

  /// The recorder's name for the codec of the stream that was found last.
  std::string Codec() const;

  const CameraAddress& Camera() const { return camera_; }

 private:
  Outcome Describe(const std::string& path);

  const CameraAddress camera_;
  std::optional<RtspClient> client_;
};

}  // namespace recorder::find
