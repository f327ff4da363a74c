#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "recorder/decode/key_picture.h"

namespace recorder {

struct JpegSize {
  int width = 0;
  int height = 0;
};

/// The size that a JPEG's header tells, in pixels; nothing where that cannot be read.
std::optional<JpegSize> SizeOfJpeg(std::span<const std::uint8_t> jpeg);

/// The picture of a key frame whose codec is recognised from its bytes and `configuration`: of a JPEG with all its
/// markers a copy. Nothing where none can be made.
std::optional<KeyPicture> MakeJpeg(std::span<const std::uint8_t> configuration, std::span<const std::uint8_t> frame);

}  // namespace recorder
