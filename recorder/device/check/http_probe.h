#pragma once

#include <string>

#include "recorder/net/camera_address.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// Fetches the picture at `path`: a JPEG, or the first whole JPEG of a stream, whatever the answer's type says.
/// kOk: `jpeg` holds a JPEG whose data a decoder has found whole. An answer that is no picture is kNotUnderstood. A
/// failure is logged with host, port and outcome. Time, login and threads: see net/http/http_client.h.
Outcome FetchPicture(const CameraAddress& address, const std::string& path, std::string& jpeg);

/// The same. `hasBegun` tells whether something came from `path` that began like a picture.
Outcome FetchPicture(const CameraAddress& address, const std::string& path, std::string& jpeg, bool& hasBegun);

/// Checks that a first picture comes from `path`, a JPEG or MJPEG address.
Outcome ProbeHttpStream(const CameraAddress& address, const std::string& path);

}  // namespace recorder
