#pragma once

#include <string>

#include "recorder/net/camera_address.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// Asks a camera whether it would send the stream at `path` in this video type and over this streaming type, both
/// numbers of platform/device.h. `path` may be a whole address, see source_path.h. A failure is logged with host, port
/// and outcome. Time, login and threads: see net/rtsp/rtsp_client.h and net/http/http_client.h.
Outcome ProbeStream(const CameraAddress& address, const std::string& path, int videoType, int streamingType);

}  // namespace recorder
