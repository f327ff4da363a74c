#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace recorder {

/// True when `bytes` begin with a whole JPEG (ITU-T T.81 annex B): start of image, a frame header with a size, a scan,
/// and the end of the image. Reads markers only; what follows the image is passed over, since cameras pad.
bool IsWholeJpeg(std::span<const std::uint8_t> bytes);
inline bool IsWholeJpeg(std::string_view bytes) {
  return IsWholeJpeg(std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()));
}

}  // namespace recorder
