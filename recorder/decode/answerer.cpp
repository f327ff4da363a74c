#include "recorder/decode/answerer.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "recorder/decode/jpeg.h"
#include "recorder/utility/bytes.h"

namespace recorder {
namespace {

using Bytes = std::span<const std::uint8_t>;

std::string_view AsText(Bytes bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

Reply Tell(const std::optional<JpegSize>& size) {
  if (!size) return {MediaStatus::kRefused};
  return {MediaStatus::kDone, static_cast<std::uint32_t>(size->width), static_cast<std::uint32_t>(size->height)};
}

}  // namespace

std::optional<Reply> Answerer::Answer(const MediaRequestHead& head, Bytes bytes) {
  const std::size_t configuration = std::min<std::size_t>(head.number, bytes.size());
  switch (head.request) {
    case MediaRequest::kOpenStream:
      return OpenStream(bytes);
    case MediaRequest::kTake:
      return body_ ? LookAtBody() : LookAtStream(head.number != 0);
    case MediaRequest::kMeasure:
      return Tell(SizeOfJpeg(bytes));
    case MediaRequest::kUnit:
      return TellUnit();
    case MediaRequest::kUnitSize:
      return TellSize();
    case MediaRequest::kDecode:
      return Decode(bytes.first(configuration), bytes.subspan(configuration));
    default:
      Take(head, bytes);
      return std::nullopt;
  }
}

void Answerer::Take(const MediaRequestHead& head, Bytes bytes) {
  using State = PictureFinder::State;
  const bool isSearched = body_ && bodyState_ == State::kMore;
  const bool isControl = head.request == MediaRequest::kControlPacket;
  if (head.request == MediaRequest::kClose) return Close();
  if (head.request == MediaRequest::kOpenBody) return OpenBody(head.number);
  if (isSearched && head.request == MediaRequest::kFeed) bodyState_ = body_->Feed(AsText(bytes));
  if (isSearched && head.request == MediaRequest::kFinish) bodyState_ = body_->Finish();
  if (stream_ && (isControl || head.request == MediaRequest::kPacket)) stream_->Feed(bytes, isControl);
}

Reply Answerer::OpenStream(Bytes description) {
  Close();
  stream_.emplace(std::string(AsText(description)), [this](Bytes packet) { Keep(packet); });
  const std::uint32_t codec = stream_->Codec();
  if (codec == 0) stream_.reset();
  return {MediaStatus::kDone, codec};
}

void Answerer::OpenBody(std::uint32_t maxPicture) {
  Close();
  body_.emplace(maxPicture);
  bodyState_ = PictureFinder::State::kMore;
}

Reply Answerer::LookAtStream(bool takesRecoveryPoint) {
  if (!stream_) return {MediaStatus::kRefused};
  const MediaStatus status = stream_->Look(takesRecoveryPoint);
  if (status != MediaStatus::kPicture) return {status};
  made_ = stream_->TakePicture();
  return {status, 0, 0, made_->Span()};
}

Reply Answerer::LookAtBody() {
  const std::uint32_t hasBegun = body_->HasBegun() ? 1 : 0;
  if (bodyState_ == PictureFinder::State::kMore) return {MediaStatus::kNothing, hasBegun};
  found_ = body_->TakePicture();
  if (found_.empty()) return {MediaStatus::kRefused, hasBegun};
  return {MediaStatus::kPicture, hasBegun, 0, AsBytes(found_)};
}

Reply Answerer::TellUnit() {
  if (!stream_) return {MediaStatus::kRefused};
  auto unit = stream_->TakeUnit();
  if (!unit) return {MediaStatus::kNothing};
  const bool isBeginning = unit->kind == UnitKind::kKey || unit->kind == UnitKind::kRecoveryPoint;
  if (isBeginning) beginning_ = std::move(unit->bytes);
  return {MediaStatus::kDone, unit->timestamp, isBeginning ? 1U : 0U};
}

Reply Answerer::TellSize() const { return Tell(stream_ ? stream_->SizeOf(beginning_) : std::nullopt); }

Reply Answerer::Decode(Bytes configuration, Bytes frame) {
  made_ = MakeJpeg(configuration, frame);
  if (!made_) return {MediaStatus::kRefused};
  return {MediaStatus::kPicture, 0, 0, made_->Span()};
}

void Answerer::Keep(Bytes packet) {
  const auto size = static_cast<std::uint16_t>(packet.size());
  if (packets_.size() + sizeof(size) + size > kLargestControl) return;
  packets_.append(AsText(BytesOf(size))).append(AsText(packet.first(size)));
}

std::string Answerer::TakePackets() { return std::exchange(packets_, {}); }

void Answerer::Close() {
  stream_.reset();
  body_.reset();
  beginning_ = {};
  made_.reset();
  found_ = {};
  packets_ = {};
}

}  // namespace recorder
