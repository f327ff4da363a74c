#pragma once

#include <string>

#include "recorder/net/camera_address.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// Takes the first whole key frame of the RTSP stream at `path` as a JPEG. kOk: `jpeg` holds it. A failure is logged
/// with host, port and outcome. Time, login and threads: as for RtpFetch in platform/media.h.
Outcome GrabPicture(const CameraAddress& address, const std::string& path, std::string& jpeg);

}  // namespace recorder
