#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "recorder/decode/jpeg_check.h"

namespace recorder {

/// Finds the first whole JPEG in a body of HTTP as it arrives, whatever is around it: nothing, the delimiters and
/// header lines of a multipart body (RFC 2046), other JPEGs. What cameras say of it in types, delimiters and lengths is
/// wrong too often; the JPEG's own markers tell where it is. One that lacks its end marker gets it. Memory: one picture
/// and what arrived with its end, and up to two copies of it while it is judged.
class PictureFinder {
 public:
  enum class State { kMore, kPicture, kMalformed };

  /// A picture of more than `maxPicture` bytes is malformed.
  explicit PictureFinder(std::size_t maxPicture);

  /// Takes the next bytes. After kPicture or kMalformed nothing more is to be fed.
  State Feed(std::string_view bytes);

  /// The body has ended: never kMore.
  State Finish();

  /// True once something began like a JPEG.
  bool HasBegun() const { return hasStart_ || passedOver_ > 0; }

  /// After kPicture. Moves it out.
  std::string TakePicture() { return std::move(picture_); }

 private:
  bool Advance();
  bool FindStart();
  void Judge(std::string picture);
  bool PassOver(std::size_t length);
  std::string Completed(std::size_t next) const;

  const std::size_t maxPicture_;
  std::string buffer_;  ///< from the start of a JPEG on, once there is one
  bool hasStart_ = false;
  JpegWalk walk_;  ///< through that JPEG
  int passedOver_ = 0;
  std::string picture_;
  State state_ = State::kMore;
};

}  // namespace recorder
