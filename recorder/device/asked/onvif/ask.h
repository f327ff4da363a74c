#pragma once

#include "recorder/device/asked/camera_report.h"

namespace recorder::onvif {

/// Asks over ONVIF (device, media 1 or 2, device IO and event services). Channels are the video sources, numbered from
/// "1" in the order in which the camera's profiles name them. kNoService: no ONVIF service at this address;
/// kNoSuchStream: no such channel; a camera with one channel has it under any name.
AskCamera Ask;

}  // namespace recorder::onvif
