#pragma once

#include <cstdint>
#include <span>

#include "recorder/decode/libav.h"

namespace recorder {

/// Decodes one access unit that needs no other, on the calling thread alone. Null when there is no picture in it or the
/// decoder marks the picture as damaged. `codec` is a four-character code such as kCodecH264.
Frame DecodeKeyFrame(std::uint32_t codec, std::span<const std::uint8_t> configuration,
                     std::span<const std::uint8_t> unit);

}  // namespace recorder
