#pragma once

#include <string>

#include "recorder/device/find/measure.h"
#include "recorder/records/records.h"

namespace recorder {

/// Keeps what was measured of a stream among the facts of its camera, in place of what was measured of it before. Where
/// there is no room for it, or the camera has gone meanwhile, it is not kept. Throws what Records throws.
void KeepMeasured(Records& records, int id, const std::string& stream, const MeasureResult& measured);

}  // namespace recorder
