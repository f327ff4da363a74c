#pragma once

#include "recorder/device/asked/camera_report.h"
#include "recorder/device/asked/onvif/profiles.h"

namespace recorder::onvif {

/// Writes into `facts` what the encoder `current` can be set to, and how it is set. What it is set to now is always
/// among what it can be set to.
void SetVideoFacts(const VideoEncoder& current, const VideoOptions& options, CameraFacts& facts);

}  // namespace recorder::onvif
