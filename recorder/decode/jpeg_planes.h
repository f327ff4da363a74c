#pragma once

#include <optional>

#include "recorder/decode/libav.h"

namespace recorder {

/// How often a picture has its colours.
enum class ChromaLayout {
  kGrey,  ///< not at all
  k420,   ///< for each 2x2 pixels
  k422,   ///< for each two pixels of a row
  k444,   ///< for each pixel
};

/// Brings the planes of a decoded picture to what JPEG means by them (JFIF, ITU-T T.871): 8 bits, the full range, the
/// matrix of ITU-R BT.601. `frame` then has them; where they fit already, it stays as it is. Nothing for a pixel format
/// that JPEG does not have. A picture in HDR, with the transfer function PQ or HLG (ITU-R BT.2100), keeps its values as
/// if they were BT.709's, and a log line says so.
std::optional<ChromaLayout> ToJpegPlanes(Frame& frame);

}  // namespace recorder
