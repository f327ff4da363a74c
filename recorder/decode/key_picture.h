#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "recorder/decode/libav.h"
#include "recorder/utility/handle.h"

namespace recorder {

/// A JPEG made of a key frame.
struct KeyPicture {
  MallocBytes bytes;
  int size = 0;

  std::span<const std::uint8_t> Span() const { return {bytes.get(), static_cast<std::size_t>(size)}; }
};

/// Encodes a decoded picture, in the colours that it means (see jpeg_planes.h) and with the shape of its pixels.
/// Nothing, and a log line, for a pixel format that JPEG does not have.
std::optional<KeyPicture> EncodeJpeg(Frame frame);

/// A copy of what is a JPEG already.
KeyPicture CopyJpeg(std::span<const std::uint8_t> jpeg);

}  // namespace recorder
