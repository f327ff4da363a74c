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

KeyFrameFinder::State KeyFrameFinder::Look(bool takesRecoveryPoint) {
  State state = State::kMore;
  picture_.reset();
  while (const auto unit = assembler_.Take()) {
    const State judged = Judge(*unit, takesRecoveryPoint);
    if (judged == State::kPicture || judged == State::kRefused) return judged;
    if (state != State::kDamaged) state = judged;
  }
  return state;
}

KeyFrameFinder::State KeyFrameFinder::Judge(const AccessUnit& unit, bool takesRecoveryPoint) {
  const bool isPoint = takesRecoveryPoint && unit.kind == UnitKind::kRecoveryPoint;
  if (unit.kind != UnitKind::kKey && !isPoint) return State::kNoKeyFrame;
  if (codec_ == kCodecJpeg) {
    if (!IsWholeJpeg(unit.bytes)) return State::kDamaged;
    picture_ = CopyJpeg(unit.bytes);
    return State::kPicture;
  }
  Frame frame = DecodeKeyFrame(codec_, depacketizer_->Configuration(), unit.bytes);
  if (!frame) return State::kDamaged;
  picture_ = EncodeJpeg(std::move(frame));
  return picture_ ? State::kPicture : State::kRefused;
}

}  // namespace recorder
