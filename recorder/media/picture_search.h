#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "recorder/media/media_process.h"

namespace recorder {

/// Looks for the first whole JPEG in a body of HTTP as it arrives; a media process does (decode/picture_finder.h). One
/// thread; time as for MediaProcess.
class PictureSearch {
 public:
  enum class State { kMore, kPicture, kMalformed, kFailed };

  /// A picture of more than `maxPicture` bytes is malformed.
  explicit PictureSearch(std::uint32_t maxPicture) : maxPicture_(maxPicture) {}

  /// Takes the next bytes. Only after kMore is more to be fed. A body that can be no more may be noticed later.
  State Feed(std::string_view bytes);

  /// The body has ended: never kMore. What was found before stays.
  State Finish();

  /// True once something began like a JPEG, and after kFailed.
  bool HasBegun() const { return hasBegun_; }

  /// After kPicture. Moves it out.
  std::string TakePicture() { return std::move(picture_); }

  bool HasPicture() const { return state_ == State::kPicture; }
  bool HasFailed() const { return state_ == State::kFailed; }

  /// After kFailed: why.
  Outcome Failure() const { return media_->Failure(); }

 private:
  State Look();

  const std::uint32_t maxPicture_;
  std::shared_ptr<MediaProcess> media_;  // from the first bytes on
  std::string last_;                     // the last two of those that were fed
  bool hasBegun_ = false;
  std::string picture_;
  State state_ = State::kMore;
};

}  // namespace recorder
