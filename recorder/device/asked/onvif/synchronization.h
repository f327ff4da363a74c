#pragma once

#include <string>

#include "recorder/device/model/model.h"
#include "recorder/net/camera_address.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/outcome.h"

namespace recorder::onvif {

/// Asks a camera for a key frame in the streams of the media profile `profile` (SetSynchronizationPoint of media 1 and
/// 2), and waits for its answer until `end` at the latest. Login, thread: as for SoapClient. A failure is logged.
Outcome SetSynchronizationPoint(const CameraAddress& camera, const OnvifMedia& media, const std::string& profile,
                                Clock::time_point end);

}  // namespace recorder::onvif
