#include "simcam/feedback.h"

#include <utility>

namespace simcam {
namespace {

constexpr unsigned kSenderReport = 200;
constexpr unsigned kReceiverReport = 201;
constexpr unsigned kPayloadFeedback = 206;
constexpr unsigned kPictureLoss = 1;
constexpr unsigned kFullIntra = 4;
constexpr size_t kHeadSize = 12;  ///< of a feedback packet: with the sources of sender and stream

unsigned ByteAt(std::string_view bytes, size_t at) { return static_cast<unsigned char>(bytes[at]); }

std::uint32_t SourceAt(std::string_view bytes, size_t at) {
  return ByteAt(bytes, at) << 24 | ByteAt(bytes, at + 1) << 16 | ByteAt(bytes, at + 2) << 8 | ByteAt(bytes, at + 3);
}

/// The packet at the beginning of `compound`, as far as it is there.
std::string_view FirstPacket(std::string_view compound) {
  const size_t words = ByteAt(compound, 2) * 256 + ByteAt(compound, 3) + 1;
  return compound.substr(0, words * 4);
}

void ReadPacket(std::string_view packet, std::uint32_t source, Feedback& feedback) {
  if (packet.size() < kHeadSize || ByteAt(packet, 1) != kPayloadFeedback) return;
  const unsigned format = ByteAt(packet, 0) & 0x1f;
  if (format == kPictureLoss && SourceAt(packet, 8) == source) feedback.pictureLoss = true;
  for (size_t at = kHeadSize; format == kFullIntra && at + 8 <= packet.size(); at += 8) {
    if (SourceAt(packet, at) == source) feedback.intraSequence = static_cast<std::uint8_t>(packet[at + 4]);
  }
}

}  // namespace

Feedback ReadFeedback(std::string_view compound, std::uint32_t source) {
  Feedback feedback;
  if (compound.size() < 4) return feedback;
  const unsigned first = ByteAt(compound, 1);
  if (first != kSenderReport && first != kReceiverReport) return feedback;
  while (compound.size() >= 4) {
    const std::string_view packet = FirstPacket(compound);
    ReadPacket(packet, source, feedback);
    compound.remove_prefix(packet.size());
  }
  return feedback;
}

void KeyFrameWishes::Begin(const StreamConfig& stream) {
  stream_ = &stream;
  lastIntra_.reset();
  lastSync_ = syncPoints_.Count(stream.path);
}

bool KeyFrameWishes::Heeds(const Feedback& feedback) {
  const bool isNewIntra = feedback.intraSequence && feedback.intraSequence != lastIntra_;
  if (isNewIntra) lastIntra_ = feedback.intraSequence;
  return (stream_->honoursPli && feedback.pictureLoss) || (stream_->honoursFir && isNewIntra);
}

bool KeyFrameWishes::HeedsSync() {
  const int count = syncPoints_.Count(stream_->path);
  return std::exchange(lastSync_, count) != count && stream_->honoursSync;
}

}  // namespace simcam
