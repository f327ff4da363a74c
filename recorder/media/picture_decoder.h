#pragma once

#include <cstdint>
#include <span>

#include "recorder/media/libav.h"

namespace recorder {

/// Decodes one access unit that needs no other, on the calling thread alone. Null when there is no picture in it or the
/// decoder marks the picture as damaged. `codec` is a four-character code such as kCodecH264.
Frame DecodeKeyFrame(std::uint32_t codec, std::span<const std::uint8_t> configuration,
                     std::span<const std::uint8_t> unit);

/// True when a picture can be made of the unit, found out by decoding it (of a JPEG by its markers alone). The picture
/// is kept for this thread: DecodeKeyFrame for the same bytes, which mostly follows, hands it out instead of decoding
/// again.
bool IsWholeKeyFrame(std::uint32_t codec, std::span<const std::uint8_t> configuration,
                     std::span<const std::uint8_t> unit);

/// Frees the picture that IsWholeKeyFrame kept for this thread, if nobody has fetched it.
void ForgetKeyFrame();

}  // namespace recorder
