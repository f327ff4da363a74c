#pragma once

#include <cstdint>
#include <deque>
#include <optional>

#include "recorder/records/records.h"
#include "recorder/watch/flapping.h"

namespace recorder {

/// What the webhook is to be told, one after the other, in the order in which it happened.
///
/// Thread:  one.
/// Failure: throws RecordsError.
class NoticeLine {
 public:
  /// Goes on behind `told`. Times are in seconds since 1970.
  NoticeLine(const Records& records, const WebhookPlace& told, std::int64_t now);

  /// The next notice; nothing as long as nothing happens.
  std::optional<Notice> Next(const Records& records, std::int64_t now);

  /// How far the webhook has been told once it has got the last notice.
  const WebhookPlace& Place() const { return place_; }

 private:
  std::optional<Notice> Steady(const Records& records, std::int64_t now);

  WebhookPlace place_;
  Flapping flapping_;
  std::deque<CameraEvent> events_;  // that were read and not taken yet
};

}  // namespace recorder
