#pragma once

#include <sys/types.h>

#include <cstdint>
#include <initializer_list>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "recorder/media/media_channel.h"
#include "recorder/media/media_messages.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// What a media process has answered. Each of its values is only what a hostile camera would have us believe.
struct MediaAnswer {
  MediaStatus status = MediaStatus::kNothing;
  std::uint32_t first = 0;
  std::uint32_t second = 0;
  std::string packets;  ///< for the camera; see MediaAnswerHead
  std::string picture;
};

/// A process of the program recorder-media, which parses whatever cameras send as video and pictures. It can reach
/// nothing but this object, and counts as hostile: what it answers is bounded and checked, and an answer that is not as
/// media_messages.h has it ends the process, which costs the picture at hand.
///
/// Owner:   the process ends with the object, and by itself when this one ends.
/// Thread:  any, one at a time.
/// Time:    an answer has until the deadline of the calling thread's RequestScope, and 2 s at least.
/// Failure: is logged, with how the process ended. From then on nothing is answered.
class MediaProcess {
 public:
  MediaProcess();
  ~MediaProcess();
  MediaProcess(const MediaProcess&) = delete;
  MediaProcess& operator=(const MediaProcess&) = delete;

  /// Waits until it is ready. False after a failure; one is that it lacks what the configuration demands.
  bool IsReady();

  /// Sends what has no answer, by and by. False after a failure.
  bool Tell(MediaRequest request, std::uint32_t number, std::span<const std::uint8_t> bytes);

  /// Says at once that what was opened has ended, so that the process forgets it. False after a failure.
  bool Close();

  /// Lets the process end by itself. From then on nothing is answered.
  void Dismiss();

  /// Sends a request with its bytes, `more` behind them. Nothing after a failure.
  std::optional<MediaAnswer> Ask(MediaRequest request, std::uint32_t number, std::span<const std::uint8_t> bytes,
                                 std::span<const std::uint8_t> more = {});

  /// Why there is no answer: kDecoderFailed, or kRecorderFailed when the program cannot be started or used.
  Outcome Failure() const { return failure_; }

  /// False when it has ended, and when it has used so much of its time that another one should go on.
  bool IsFresh() const;

 private:
  bool IsGreeted(Clock::time_point deadline);
  void Greet(Clock::time_point deadline);
  void Append(const MediaRequestHead& head, std::span<const std::uint8_t> bytes);
  bool Send(std::initializer_list<std::span<const std::uint8_t>> parts, Clock::time_point deadline);
  std::optional<MediaAnswer> ReadAnswer(Clock::time_point deadline);
  bool ReadRest(const MediaAnswerHead& head, MediaAnswer& answer, Clock::time_point deadline);
  void Fail(const std::string& what);
  int End();

  std::mutex mutex_;
  MediaChannel channel_;
  std::vector<std::uint8_t> unsent_;  // requests without an answer: to send each alone would wake the process for each
  pid_t process_ = -1;
  bool isGreeted_ = false;
  Outcome failure_ = Outcome::kDecoderFailed;
};

}  // namespace recorder
