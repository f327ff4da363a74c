#include "recorder/media/key_frame_search.h"

#include <algorithm>
#include <cstring>

#include "recorder/media/media_pool.h"
#include "recorder/media/rtp_header.h"
#include "recorder/utility/bytes.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/translate.h"

namespace recorder {
namespace {

using Bytes = std::span<const std::uint8_t>;
using State = KeyFrameSearch::State;

constexpr std::pair<MediaStatus, State> kStates[] = {{MediaStatus::kNothing, State::kMore},
                                                     {MediaStatus::kNoKeyFrame, State::kNoKeyFrame},
                                                     {MediaStatus::kDamaged, State::kDamaged},
                                                     {MediaStatus::kPicture, State::kPicture}};

}  // namespace

KeyFrameSearch::KeyFrameSearch(SendControl sendControl) : sendControl_(std::move(sendControl)), media_(BorrowMedia()) {}

Outcome KeyFrameSearch::Open(const std::string& description) {
  const auto answer = media_->Ask(MediaRequest::kOpenStream, 0, AsBytes(description));
  if (!answer) return media_->Failure();
  return answer->first == 0 ? Outcome::kNoVideo : Outcome::kOk;
}

bool KeyFrameSearch::Feed(Bytes packet, bool isControl) {
  const bool isTaken = media_->Tell(isControl ? MediaRequest::kControlPacket : MediaRequest::kPacket, 0, packet);
  return !isTaken || (!isControl && EndsUnit(packet));
}

KeyFrameSearch::State KeyFrameSearch::Look(bool takesRecoveryPoint) {
  auto answer = media_->Ask(MediaRequest::kTake, takesRecoveryPoint ? 1 : 0, {});
  if (!answer) return State::kFailed;
  HandOn(AsBytes(answer->packets));
  picture_ = std::move(answer->picture);
  return Translate(kStates, answer->status, State::kRefused);
}

Outcome KeyFrameSearch::TakeUnit(std::optional<StreamUnit>& unit) {
  const auto answer = media_->Ask(MediaRequest::kUnit, 0, {});
  unit.reset();
  if (!answer) return media_->Failure();
  HandOn(AsBytes(answer->packets));
  if (answer->status == MediaStatus::kDone) unit = StreamUnit{answer->first, answer->second != 0};
  return Outcome::kOk;
}

std::optional<PictureSize> KeyFrameSearch::SizeOfUnit() {
  const auto answer = media_->Ask(MediaRequest::kUnitSize, 0, {});
  if (!answer || answer->status != MediaStatus::kDone) return std::nullopt;
  const auto isSide = [](std::uint32_t pixels) { return pixels > 0 && pixels <= kMostPixels; };
  if (!isSide(answer->first) || !isSide(answer->second)) return std::nullopt;
  return PictureSize{static_cast<int>(answer->first), static_cast<int>(answer->second)};
}

/// By its marker, or by being of another picture than the packet before.
bool KeyFrameSearch::EndsUnit(Bytes packet) {
  const auto header = ParseRtpHeader(packet);
  if (!header) return false;
  source_ = header->source;
  const bool isOther = timestamp_ && *timestamp_ != header->timestamp;
  timestamp_ = header->timestamp;
  return header->marker || isOther;
}

void KeyFrameSearch::HandOn(Bytes packets) const {
  std::uint16_t size = 0;
  while (packets.size() > sizeof(size)) {
    std::memcpy(&size, packets.data(), sizeof(size));
    packets = packets.subspan(sizeof(size));
    const Bytes packet = packets.first(std::min<std::size_t>(size, packets.size()));
    if (!packet.empty()) sendControl_(packet);
    packets = packets.subspan(packet.size());
  }
}

}  // namespace recorder
