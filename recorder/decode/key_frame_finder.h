#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "recorder/decode/access_unit.h"
#include "recorder/decode/depacketizer.h"
#include "recorder/decode/jpeg.h"
#include "recorder/decode/key_picture.h"
#include "recorder/media/media_messages.h"

namespace recorder {

/// Finds the first whole key frame among the packets of a stream, and makes a JPEG of it. A key frame has to be decoded
/// to be judged: a damaged one is passed over. One thread.
class KeyFrameFinder {
 public:
  /// For the one video of the session description. `sendControl`: see Depacketizer.
  KeyFrameFinder(const std::string& description, Depacketizer::SendControl sendControl);

  /// Four-character code of the video's codec; 0 for one that the recorder does not know, which is not to be fed.
  std::uint32_t Codec() const { return codec_; }

  /// Takes one whole packet of RTP, or of RTCP.
  void Feed(std::span<const std::uint8_t> packet, bool isControl);

  /// Looks at the units that are complete, up to the first picture: kNothing to kRefused of its values.
  /// `takesRecoveryPoint`: such a unit will do, too.
  MediaStatus Look(bool takesRecoveryPoint);

  /// After kPicture. Moves it out.
  KeyPicture TakePicture() { return std::move(*picture_); }

  /// Takes the next unit that is complete, which Look() then passes over.
  std::optional<AccessUnit> TakeUnit() { return assembler_.Take(); }

  /// The size of the picture in a unit where decoding can begin; nothing where there is none.
  std::optional<JpegSize> SizeOf(std::span<const std::uint8_t> unit) const;

 private:
  MediaStatus Judge(const AccessUnit& unit, bool takesRecoveryPoint);

  std::unique_ptr<Depacketizer> depacketizer_;
  std::uint32_t codec_;
  AccessUnitAssembler assembler_;
  std::vector<std::uint8_t> pieces_;
  std::optional<KeyPicture> picture_;
};

}  // namespace recorder
