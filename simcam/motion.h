#pragma once

#include <string>

#include "simcam/fault.h"

namespace simcam {

/// How a camera writes its motion JPEG: a multipart answer (RFC 2046) without end, a picture a part, or what its fault
/// makes of that. Pure functions, any thread.

/// Status line and header lines.
std::string MotionHead(Fault fault);
/// A part with its delimiter.
std::string MotionPart(Fault fault, const std::string& jpeg, bool isFirst);

/// The JPEG as this camera has it, in a part or alone.
std::string OddJpeg(Fault fault, const std::string& jpeg);

}  // namespace simcam
