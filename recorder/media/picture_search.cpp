#include "recorder/media/picture_search.h"

#include <algorithm>
#include <optional>

#include "recorder/media/media_pool.h"
#include "recorder/utility/bytes.h"

namespace recorder {
namespace {

/// True where a JPEG may begin or end: to look at each piece of it would make the process wake up for each.
bool MayEndPicture(const std::string& last, std::string_view bytes) {
  const auto isEdge = [](std::string_view text) {
    return text.find("\xFF\xD8") != std::string_view::npos || text.find("\xFF\xD9") != std::string_view::npos;
  };
  return isEdge(bytes) || isEdge(last + std::string(bytes.substr(0, 1)));
}

}  // namespace

PictureSearch::State PictureSearch::Feed(std::string_view bytes) {
  if (!media_) {
    media_ = BorrowMedia();
    media_->Tell(MediaRequest::kOpenBody, maxPicture_, {});
  }
  const bool isWorthALook = MayEndPicture(last_, bytes);
  last_ = bytes.substr(bytes.size() - std::min<std::size_t>(bytes.size(), 2));
  const bool isTaken = media_->Tell(MediaRequest::kFeed, 0, AsBytes(bytes));
  return isWorthALook || !isTaken ? Look() : state_;
}

PictureSearch::State PictureSearch::Finish() {
  if (!media_) return state_ = State::kMalformed;
  if (state_ != State::kMore) return state_;
  media_->Tell(MediaRequest::kFinish, 0, {});
  return Look() == State::kMore ? state_ = State::kMalformed : state_;
}

PictureSearch::State PictureSearch::Look() {
  std::optional<MediaAnswer> answer = media_->Ask(MediaRequest::kTake, 0, {});
  hasBegun_ = hasBegun_ || !answer || answer->first != 0;
  if (!answer) return state_ = State::kFailed;
  if (answer->status == MediaStatus::kNothing) return state_;
  picture_ = std::move(answer->picture);
  const bool isPicture = !picture_.empty() && picture_.size() <= maxPicture_;
  return state_ = isPicture ? State::kPicture : State::kMalformed;
}

}  // namespace recorder
