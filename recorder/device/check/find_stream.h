#pragma once

#include <string>

#include "recorder/net/camera_address.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// Where the stream at a path is.
struct FoundStream {
  Outcome outcome = Outcome::kNotThisProtocol;  ///< kOk: it is there
  bool isOverHttp = false;
  std::string jpeg;  ///< over HTTP: its first picture
};

// At a camera's port RTSP or HTTP may be spoken, or both. These ask for the stream at `path` by one, and where that has
// nothing there, by the other. Each has its share of the time where both are tried: RTSP as the first gives up after
// half of it if it was not spoken by then, HTTP as the first after half of it in any case, and the second has half of
// what is left where the first was spoken. The cause is what the protocol said that was recognised, RTSP's before
// HTTP's unless HTTP began to send a picture; kTimedOut is only said when neither was. `videoType`, a number of
// platform/device.h, is what is wanted over RTSP.

/// For any codec, or one that comes over RTSP alone; a picture over HTTP is then kNoVideo.
FoundStream FindByRtspFirst(const CameraAddress& address, const std::string& path, int videoType);

/// For a codec that comes over HTTP, too.
FoundStream FindByHttpFirst(const CameraAddress& address, const std::string& path, int videoType);

/// True for a codec that comes over HTTP as well as over RTSP, and for any.
bool CanBeOverHttp(int videoType);

void LogUnusable(const CameraAddress& address, Outcome outcome);

}  // namespace recorder
