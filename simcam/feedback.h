#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "simcam/config.h"
#include "simcam/sync_points.h"

namespace simcam {

/// How a client asks for a key frame in one RTCP compound.
struct Feedback {
  bool pictureLoss = false;                   ///< picture loss indication (RFC 4585, section 6.3.1)
  std::optional<std::uint8_t> intraSequence;  ///< of a full intra request (RFC 5104, section 4.3.1)
};

/// Reads the requests in `compound` that are for the stream `source`. A compound begins with a report (RFC 3550,
/// section 6.1): in any other there is nothing.
Feedback ReadFeedback(std::string_view compound, std::uint32_t source);

/// Whether what the client of one session asks for brings a key frame. One thread.
class KeyFrameWishes {
 public:
  explicit KeyFrameWishes(const SyncPoints& syncPoints) : syncPoints_(syncPoints) {}

  /// A session with `stream`, which must live on, begins: what was asked before does not count.
  void Begin(const StreamConfig& stream);
  bool Heeds(const Feedback& feedback);
  /// Whether a web service was asked since the last time.
  bool HeedsSync();

 private:
  const SyncPoints& syncPoints_;
  const StreamConfig* stream_ = nullptr;
  std::optional<std::uint8_t> lastIntra_;
  int lastSync_ = 0;
};

}  // namespace simcam
