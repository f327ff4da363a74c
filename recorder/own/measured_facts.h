#pragma once

#include <string>

#include "recorder/device/find/measure.h"
#include "recorder/records/records.h"

namespace recorder {

/// Keeps what was measured of a stream among the facts of its camera, in place of what was measured of it before; where
/// there is no room, the oldest facts go. `asked` is the record that it was measured by: where the stream is asked by
/// something else meanwhile, nothing is kept, and nobody is told. Throws what Records throws.
void KeepMeasured(Records& records, const CameraRecord& asked, const std::string& stream,
                  const MeasureResult& measured);

}  // namespace recorder
