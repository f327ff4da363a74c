#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "recorder/decode/key_frame_finder.h"
#include "recorder/decode/picture_finder.h"
#include "recorder/media/media_messages.h"

namespace recorder {

/// An answer before it is sent. The picture is valid until the next request.
struct Reply {
  MediaStatus status = MediaStatus::kNothing;
  std::uint32_t first = 0;
  std::uint32_t second = 0;
  std::span<const std::uint8_t> picture = {};
};

/// Does what a media process is asked to; see media_messages.h. One thread.
class Answerer {
 public:
  /// Nothing for a request without an answer. Throws std::bad_alloc.
  std::optional<Reply> Answer(const MediaRequestHead& head, std::span<const std::uint8_t> bytes);

  /// Packets for the camera since the last call, as an answer has them.
  std::string TakePackets();

 private:
  void Take(const MediaRequestHead& head, std::span<const std::uint8_t> bytes);
  Reply OpenStream(std::span<const std::uint8_t> description);
  void OpenBody(std::uint32_t maxPicture);
  Reply LookAtStream(bool takesRecoveryPoint);
  Reply LookAtBody();
  Reply TellUnit();
  Reply TellSize() const;
  Reply Decode(std::span<const std::uint8_t> configuration, std::span<const std::uint8_t> frame);
  void Keep(std::span<const std::uint8_t> packet);
  void Close();

  std::optional<KeyFrameFinder> stream_;
  std::optional<PictureFinder> body_;
  PictureFinder::State bodyState_ = PictureFinder::State::kMore;
  std::vector<std::uint8_t> beginning_;  // the last unit of a stream that is measured where decoding can begin
  std::string packets_;
  std::optional<KeyPicture> made_;
  std::string found_;
};

}  // namespace recorder
