#include "recorder/decode/access_unit.h"

#include <cstddef>

#include "recorder/utility/limits.h"

namespace recorder {
namespace {

using Bytes = std::span<const std::uint8_t>;

}  // namespace

void AccessUnitAssembler::Add(const RtpHeader& header, Bytes bytes) {
  const RtpHeader last = last_.value_or(header);
  const bool isRepeated = last_ && header.source == last.source && header.sequence == last.sequence;
  if (isRepeated) return;
  const bool isNext = header.source == last.source && header.sequence == static_cast<std::uint16_t>(last.sequence + 1);
  const bool hasGap = last_ && !isNext;
  last_ = header;
  const PieceStart start = StartOfPiece(codec_, bytes);
  if (hasGap) {
    GiveUp(header.timestamp);  // what is missing may belong to the unit before, to this packet's own, or to both
  } else if (BeginsNext(start, header.timestamp)) {
    EndPicture();
  }
  if (!bytes.empty()) Append(start, header.timestamp, bytes);
  if (header.marker) TakeMarker();
}

std::optional<AccessUnit> AccessUnitAssembler::Take() {
  if (finished_.empty()) return std::nullopt;
  AccessUnit unit = std::move(finished_.front());
  finished_.erase(finished_.begin());
  return unit;
}

/// Drops what is open, and what follows up to the next picture.
void AccessUnitAssembler::GiveUp(std::uint32_t timestamp) {
  open_.clear();
  picture_ = Picture{.timestamp = timestamp, .isDamaged = true};
}

/// The slice alone does not tell: the second field of a frame begins like a picture.
bool AccessUnitAssembler::BeginsNext(PieceStart start, std::uint32_t timestamp) const {
  if (!picture_) return false;
  const bool isOver = picture_->hasMarker || timestamp != picture_->timestamp;
  const bool canBegin = start == PieceStart::kPicture || (picture_->isDamaged && start == PieceStart::kOther);
  return isOver && canBegin;
}

void AccessUnitAssembler::EndPicture() {
  if (!picture_->isHandedOut) HandOut();
  open_.erase(open_.begin(), open_.begin() + static_cast<std::ptrdiff_t>(picture_->end));
  picture_.reset();
}

void AccessUnitAssembler::Append(PieceStart start, std::uint32_t timestamp, Bytes bytes) {
  if (start != PieceStart::kNothing) isInSlice_ = start != PieceStart::kOther;
  if (open_.size() + bytes.size() > kLargestUnit) GiveUp(timestamp);
  if (isInSlice_) GoOn(timestamp);
  const bool isDamaged = picture_ && picture_->isDamaged;
  if (!isDamaged) open_.insert(open_.end(), bytes.begin(), bytes.end());
  if (isInSlice_) picture_->end = open_.size();
}

/// The picture begins, or more of it comes.
void AccessUnitAssembler::GoOn(std::uint32_t timestamp) {
  if (!picture_) picture_ = Picture{};
  hasEarlyMarkers_ = hasEarlyMarkers_ || (picture_->hasMarker && !picture_->isDamaged);
  picture_->timestamp = timestamp;
  picture_->isHandedOut = false;
}

void AccessUnitAssembler::TakeMarker() {
  if (picture_) {
    picture_->hasMarker = true;
    const bool isWhole = !picture_->isHandedOut && !hasEarlyMarkers_;
    if (isWhole) picture_->end = open_.size();
    if (isWhole) HandOut();
  }
  const std::size_t end = picture_ ? picture_->end : 0;
  if (open_.size() - end > kLargestParameterSets) open_.resize(end);
}

void AccessUnitAssembler::HandOut() {
  picture_->isHandedOut = true;
  if (picture_->isDamaged) return;
  const Bytes bytes = Bytes(open_).first(picture_->end);
  const UnitKind kind = ClassifyUnit(codec_, bytes);  // parameter sets belong to the picture that follows
  if (kind != UnitKind::kNoPicture) finished_.push_back({{bytes.begin(), bytes.end()}, kind, picture_->timestamp});
}

}  // namespace recorder
