#pragma once

#include <string>

#include "simcam/fault.h"

namespace simcam {

/// A session description of ours as a camera with that fault writes it.
std::string SpoiltSdp(Fault fault, std::string sdp);

}  // namespace simcam
