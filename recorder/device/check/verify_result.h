#pragma once

#include "platform/device.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// The verification result by which a caller is told how asking a camera ended.
CAMERA_VERIFY_RESULT ToVerifyResult(Outcome outcome);

}  // namespace recorder
