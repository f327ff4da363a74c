#pragma once

#include <json/value.h>

#include "recorder/records/records.h"

namespace recorder {

/// An event as everybody is told it: {"id", "camera", "at", "cause", "before"}. The last is null where there was no
/// contact with the camera before.
Json::Value EventJson(const CameraEvent& event);

}  // namespace recorder
