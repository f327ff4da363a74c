#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "recorder/media/media_process.h"

namespace recorder {

/// An access unit of a stream.
struct StreamUnit {
  std::uint32_t time = 0;    ///< of RTP
  bool isBeginning = false;  ///< decoding can begin there: it is a key frame, or a point of recovery
};

/// In pixels.
struct PictureSize {
  int width = 0;
  int height = 0;
};

/// Looks for the first whole key frame of a stream as its packets arrive; a media process does, and makes a JPEG of it
/// (decode/key_frame_finder.h). One thread; time as for MediaProcess.
class KeyFrameSearch {
 public:
  enum class State {
    kMore,        ///< no unit has come
    kNoKeyFrame,  ///< units came, and none was a key frame
    kDamaged,     ///< a key frame came, and was not whole
    kPicture,
    kRefused,  ///< no JPEG can be made of such pictures
    kFailed,
  };

  using SendControl = std::function<void(std::span<const std::uint8_t> packet)>;

  /// Starts the process if need be, which then gets ready while the camera is asked. `sendControl` is called out of
  /// Look with packets (RTCP) for the camera.
  explicit KeyFrameSearch(SendControl sendControl);

  /// For the one video of the session description. kNoVideo for a codec that the recorder does not know.
  Outcome Open(const std::string& description);

  /// Takes one whole packet of RTP, or of RTCP. True when it has ended a unit, as far as its header tells, so that
  /// looking is worthwhile.
  bool Feed(std::span<const std::uint8_t> packet, bool isControl);

  /// Looks at the units that are complete. `takesRecoveryPoint`: a point of recovery will do, too.
  State Look(bool takesRecoveryPoint);

  /// Takes the next unit that is complete, nothing when none is, of a stream that is measured instead of looked at.
  Outcome TakeUnit(std::optional<StreamUnit>& unit);

  /// The size of the last unit where decoding can begin; nothing where it cannot be told.
  std::optional<PictureSize> SizeOfUnit();

  /// After kPicture. Moves it out.
  std::string TakePicture() { return std::move(picture_); }

  /// The sender of the video (SSRC), 0 before its first packet.
  std::uint32_t Source() const { return source_; }

  /// After kFailed: why.
  Outcome Failure() const { return media_->Failure(); }

 private:
  bool EndsUnit(std::span<const std::uint8_t> packet);
  void HandOn(std::span<const std::uint8_t> packets) const;

  SendControl sendControl_;
  std::shared_ptr<MediaProcess> media_;
  std::optional<std::uint32_t> timestamp_;  // of the last packet
  std::uint32_t source_ = 0;
  std::string picture_;
};

}  // namespace recorder
