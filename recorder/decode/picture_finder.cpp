#include "recorder/decode/picture_finder.h"

#include <algorithm>

#include "recorder/utility/bytes.h"
#include "recorder/utility/limits.h"

namespace recorder {
namespace {

constexpr std::string_view kJpegStart = "\xFF\xD8\xFF";
constexpr std::string_view kJpegEnd = "\xFF\xD9";
constexpr std::size_t kMostFed = 64 * kKiB;  // at a time, by far
constexpr std::size_t kLookAhead = 4;        // a walk knows its position at most so many bytes later

}  // namespace

PictureFinder::PictureFinder(std::size_t maxPicture) : maxPicture_(maxPicture) {
  buffer_.reserve(maxPicture + kMostFed);  // growth would hold twice as much; what is not filled costs no memory
}

PictureFinder::State PictureFinder::Feed(std::string_view bytes) {
  buffer_ += bytes;
  while (state_ == State::kMore && Advance()) {
  }
  return state_;
}

PictureFinder::State PictureFinder::Finish() {
  if (state_ == State::kMore && hasStart_ && walk_.HasScan()) Judge(Completed(buffer_.size()));
  if (state_ == State::kMore) state_ = State::kMalformed;
  return state_;
}

/// One JPEG, or what looks like one, further. False when that needs more bytes.
bool PictureFinder::Advance() {
  if (!hasStart_ && !FindStart()) return false;
  const JpegWalk::State walked = walk_.Advance(AsBytes(buffer_));
  const std::size_t position = walk_.Position();
  const bool isTooLarge =
      position > maxPicture_ || (walked == JpegWalk::State::kMore && buffer_.size() > maxPicture_ + kLookAhead);
  if (isTooLarge) state_ = State::kMalformed;
  if (isTooLarge || walked == JpegWalk::State::kMore) return false;
  if (walked == JpegWalk::State::kEnd) Judge(buffer_.substr(0, position));
  if (walked == JpegWalk::State::kNext) Judge(Completed(position));
  return state_ == State::kMore && PassOver(position);
}

bool PictureFinder::FindStart() {
  const std::size_t found = buffer_.find(kJpegStart);
  hasStart_ = found != std::string::npos;
  buffer_.erase(0, hasStart_ ? found : buffer_.size() - std::min(buffer_.size(), kJpegStart.size() - 1));
  return hasStart_;
}

void PictureFinder::Judge(std::string picture) {
  if (picture.size() > maxPicture_ || !IsWholeJpeg(AsBytes(picture))) return;
  picture_ = std::move(picture);
  state_ = State::kPicture;
}

/// Each costs up to the work for a picture.
bool PictureFinder::PassOver(std::size_t length) {
  constexpr int kMostPassedOver = 4;
  if (++passedOver_ == kMostPassedOver) state_ = State::kMalformed;
  buffer_.erase(0, std::max(length, kJpegStart.size() - 1));
  hasStart_ = false;
  walk_ = {};
  return state_ == State::kMore;
}

/// The JPEG at the beginning with an end marker: it ends before the delimiter of the part that `next` lies in, or at
/// `next` itself.
std::string PictureFinder::Completed(std::size_t next) const {
  constexpr std::string_view kDelimiter = "\r\n--";
  const std::string_view all = std::string_view(buffer_).substr(0, next);
  const std::size_t lines = all.substr(next - std::min(next, kLargestPartLines)).rfind(kDelimiter);
  const std::size_t end = lines == std::string_view::npos ? next : next - std::min(next, kLargestPartLines) + lines;
  return std::string(all.substr(0, end)) + std::string(kJpegEnd);
}

}  // namespace recorder
