#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace recorder {

/// Takes the first JPEG out of a multipart body (RFC 2046 section 5.1) as it arrives. Cameras differ from the standard
/// in dashes and line ends, so the delimiter is the first line that matches the boundary but for its dashes. Memory: at
/// most one part of `maxPart` bytes and its headers.
class MultipartReader {
 public:
  enum class State { kMore, kPicture, kMalformed };

  /// `contentType` is the answer's, with its boundary.
  MultipartReader(std::string_view contentType, std::size_t maxPart);

  /// True for a Content-Type that this class reads.
  static bool IsMultipart(std::string_view contentType);

  /// Takes the next bytes. After kPicture or kMalformed nothing more is to be fed.
  State Feed(std::string_view bytes);

  /// After kPicture: the picture, whole as the part said. Moves it out.
  std::string TakePicture() { return std::move(picture_); }

 private:
  enum class Stage { kDelimiter, kHeaders, kBody };

  bool Advance();
  bool TakeLine(std::string& line);
  bool ReadDelimiter();
  bool ReadHeader();
  bool ReadBody();
  std::size_t FindEnd();
  void FinishPart(std::size_t length, std::size_t next);

  const std::string boundary_;  ///< without its leading dashes
  const std::size_t maxPart_;
  std::string buffer_;
  std::string delimiter_;  ///< as it stands on its line
  std::string picture_;
  std::size_t lineBytes_ = 0;              ///< of lines since the last part
  std::optional<std::size_t> partLength_;  ///< from Content-Length
  std::size_t searched_ = 0;               ///< the part has no end before this place of the buffer
  Stage stage_ = Stage::kDelimiter;
  State state_ = State::kMore;
};

}  // namespace recorder
