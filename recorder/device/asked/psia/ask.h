#pragma once

#include "recorder/device/asked/camera_report.h"

namespace recorder::psia {

/// Asks over the PSIA IP media device API (1.0, 1.1). Channels are the camera's streaming channels by their own ids;
/// one that the camera does not have is replaced by its default one, the first that is enabled. kNoService: no PSIA
/// service at this address.
AskCamera Ask;

}  // namespace recorder::psia
