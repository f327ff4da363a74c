#include "recorder/decode/jpeg_check.h"

#include <algorithm>

#include "recorder/decode/jpeg_decoder.h"
#include "recorder/utility/limits.h"

namespace recorder {
namespace {

// Marker codes, the byte after 0xFF.
constexpr unsigned kStartOfImage = 0xD8;
constexpr unsigned kEndOfImage = 0xD9;
constexpr unsigned kStartOfScan = 0xDA;
constexpr unsigned kFill = 0xFF;

using Bytes = std::span<const std::uint8_t>;

unsigned Number(Bytes bytes, std::size_t at) { return unsigned{bytes[at]} << 8U | bytes[at + 1]; }

bool IsFrameHeader(unsigned marker) {  // SOF0 to SOF15 without DHT, JPG and DAC, which lie between
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

/// A stuffed byte, or a restart marker.
bool IsScanData(unsigned marker) { return marker == 0 || (marker >= 0xD0 && marker <= 0xD7); }

bool HasUsableSize(Bytes header) {
  if (header.size() < 9) return false;
  const std::size_t pixels = std::size_t{Number(header, 5)} * Number(header, 7);
  return pixels > 0 && pixels <= std::size_t{kMostPixels};
}

}  // namespace

JpegWalk::State JpegWalk::Advance(Bytes bytes) {
  while (state_ == State::kMore && Step(bytes)) {
  }
  return state_;
}

/// To the next marker, or past one with its segment. False where that needs more bytes, or the walk ends.
bool JpegWalk::Step(Bytes bytes) {
  if (isInScan_ && !SkipScanData(bytes)) return false;
  if (at_ + 2 > bytes.size()) return false;
  const unsigned marker = bytes[at_ + 1];
  if (bytes[at_] != kFill) return Stop(State::kBroken);
  if (at_ == 0) {
    at_ = 2;
    return marker == kStartOfImage || Stop(State::kBroken);
  }
  if (marker == kStartOfImage) return Stop(HasScan() ? State::kNext : State::kBroken);
  if (marker == kEndOfImage) return ReadEnd();
  if (marker != kFill) return ReadSegment(bytes, marker);
  ++at_;
  return true;
}

/// To the next marker that ends the scan's data. False where it is not there yet.
bool JpegWalk::SkipScanData(Bytes bytes) {
  while (at_ + 1 < bytes.size()) {
    const auto found = std::find(bytes.begin() + static_cast<std::ptrdiff_t>(at_), bytes.end() - 1, kFill);
    at_ = static_cast<std::size_t>(found - bytes.begin());
    if (at_ + 1 == bytes.size()) return false;
    isInScan_ = IsScanData(bytes[at_ + 1]) || bytes[at_ + 1] == kFill;
    if (!isInScan_) return true;
    ++at_;
  }
  return false;
}

bool JpegWalk::ReadSegment(Bytes bytes, unsigned marker) {
  constexpr int kMostScans = 100;  // a decoder goes over the whole picture for each; progressive ones have some ten
  if (at_ + 4 > bytes.size()) return false;
  const std::size_t length = Number(bytes, at_ + 2);
  if (length < 2) return Stop(State::kBroken);
  if (at_ + 2 + length > bytes.size()) return false;
  if (IsFrameHeader(marker)) hasSize_ = HasUsableSize(bytes.subspan(at_, 2 + length));
  isInScan_ = marker == kStartOfScan;
  scans_ += isInScan_ ? 1 : 0;
  at_ += 2 + length;
  return scans_ <= kMostScans || Stop(State::kBroken);
}

bool JpegWalk::ReadEnd() {
  at_ += 2;
  return Stop(hasSize_ && HasScan() ? State::kEnd : State::kBroken);
}

bool JpegWalk::Stop(State state) {
  state_ = state;
  return false;
}

bool HasJpegMarkers(Bytes bytes) { return JpegWalk().Advance(bytes) == JpegWalk::State::kEnd; }

bool IsWholeJpeg(Bytes bytes) {
  JpegWalk walk;
  return walk.Advance(bytes) == JpegWalk::State::kEnd && DecodesWhole(bytes.first(walk.Position()));
}

}  // namespace recorder
