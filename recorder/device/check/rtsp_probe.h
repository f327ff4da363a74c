#pragma once

#include <string>

#include "recorder/net/camera_address.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// What came of asking for a stream over RTSP.
struct RtspAnswer {
  Outcome outcome;        ///< kOk: the camera would send it
  bool isSpoken = false;  ///< RTSP is spoken at that port
};

/// Asks a camera whether it would send the stream at `path` in `videoType`, a number of platform/device.h. Any
/// (VIDEO_TYPE_ANY) is each of which a picture can be made. Another codec is kNoVideo, and logged. Gives up at
/// `answerBy` when no RTSP was spoken by then, else at the deadline of the thread's RequestScope.
RtspAnswer AskRtsp(const CameraAddress& address, const std::string& path, int videoType, Clock::time_point answerBy);

}  // namespace recorder
