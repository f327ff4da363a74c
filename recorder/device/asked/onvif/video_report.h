#pragma once

#include "recorder/device/asked/camera_report.h"
#include "recorder/device/asked/onvif/profiles.h"

namespace recorder::onvif {

/// Writes into `report` what the encoder `current` can be set to, and how it is set. What it is set to now is always
/// among what it can be set to.
void ReportVideo(const VideoEncoder& current, const VideoOptions& options, CameraReport& report);

}  // namespace recorder::onvif
