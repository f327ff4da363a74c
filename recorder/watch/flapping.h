#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>

#include "recorder/notice/notice.h"

namespace recorder {

/// Which changes of cameras are told: all of them, until a camera changes more than 4 times within 10 minutes. That it
/// is flapping is told once, and nothing more until it has been the same for 10 minutes: then its last change is.
/// What follows depends on the events and their times alone, so that a new object that was given those of a day goes on
/// as the one before would have. One thread; nothing waits.
class Flapping {
 public:
  static constexpr std::int64_t kTime = 600;  ///< in seconds

  /// A camera that is steady again at `now` at the latest, in seconds since 1970, and its last change. Ask before Take,
  /// with the time of its event, until there is none.
  std::optional<Notice> TakeSteady(std::int64_t now);

  /// What is to be told of the next event; nothing for silence.
  std::optional<Notice> Take(const CameraEvent& event);

 private:
  struct Camera {
    std::deque<std::int64_t> changes;  // of the last kTime
    bool isFlapping = false;
    CameraEvent last;
  };

  std::map<int, Camera> cameras_;
};

}  // namespace recorder
