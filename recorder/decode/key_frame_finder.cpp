#include "recorder/decode/key_frame_finder.h"

#include <utility>

#include "platform/media.h"
#include "recorder/decode/jpeg_check.h"
#include "recorder/decode/picture_decoder.h"
#include "recorder/media/rtp_header.h"

namespace recorder {

KeyFrameFinder::KeyFrameFinder(const std::string& description, Depacketizer::SendControl sendControl)
    : depacketizer_(Depacketizer::Open(description, std::move(sendControl))),
      codec_(depacketizer_ ? depacketizer_->Codec() : 0),
      assembler_(codec_) {}

void KeyFrameFinder::Feed(std::span<const std::uint8_t> packet, bool isControl) {
  pieces_.clear();
  depacketizer_->Feed(packet, pieces_);
  const auto header = ParseRtpHeader(packet);
  if (header && !isControl) assembler_.Add(*header, pieces_);
}

MediaStatus KeyFrameFinder::Look(bool takesRecoveryPoint) {
  MediaStatus status = MediaStatus::kNothing;
  picture_.reset();
  while (const auto unit = assembler_.Take()) {
    const MediaStatus judged = Judge(*unit, takesRecoveryPoint);
    if (judged == MediaStatus::kPicture || judged == MediaStatus::kRefused) return judged;
    if (status != MediaStatus::kDamaged) status = judged;
  }
  return status;
}

std::optional<JpegSize> KeyFrameFinder::SizeOf(std::span<const std::uint8_t> unit) const {
  if (codec_ == kCodecJpeg) return SizeOfJpeg(unit);
  const Frame frame = DecodeKeyFrame(codec_, depacketizer_->Configuration(), unit);
  return frame ? std::optional(JpegSize{frame->width, frame->height}) : std::nullopt;
}

MediaStatus KeyFrameFinder::Judge(const AccessUnit& unit, bool takesRecoveryPoint) {
  const bool isPoint = takesRecoveryPoint && unit.kind == UnitKind::kRecoveryPoint;
  if (unit.kind != UnitKind::kKey && !isPoint) return MediaStatus::kNoKeyFrame;
  if (codec_ == kCodecJpeg) {
    if (!IsWholeJpeg(unit.bytes)) return MediaStatus::kDamaged;
    picture_ = CopyJpeg(unit.bytes);
    return MediaStatus::kPicture;
  }
  Frame frame = DecodeKeyFrame(codec_, depacketizer_->Configuration(), unit.bytes);
  if (!frame) return MediaStatus::kDamaged;
  picture_ = EncodeJpeg(std::move(frame));
  return picture_ ? MediaStatus::kPicture : MediaStatus::kRefused;
}

}  // namespace recorder
