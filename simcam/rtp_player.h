#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "simcam/clip.h"
#include "simcam/config.h"

namespace simcam {

/// One client's walk through a clip that never ends, as RTP (RFC 3550), interleaved (RFC 2326, section 10.12) or not,
/// with what the camera's fault does to it. Sequence numbers and times go on through all starts. Single-threaded.
class RtpPlayer {
 public:
  static constexpr uint32_t kSource = 0x51AC0DE5;  ///< SSRC

  explicit RtpPlayer(Fault fault) : fault_(fault) {}

  /// Goes to where a session starts. Stream and clip must live on; `session` is the header line of requests of ours.
  void Start(const StreamConfig& stream, const RtpClip& clip, int channel, const std::string& session);
  void SkipToKeyFrame();

  [[nodiscard]] bool IsAtKeyFrame() const { return Current().key; }
  /// The packets of the unit at hand; moves on.
  std::vector<std::string> NextPackets();
  /// The same as the connection carries them.
  std::string NextUnit();

  /// True after the first unit and every 5 s.
  [[nodiscard]] bool IsReportDue() const { return unitsSent_ % static_cast<size_t>(stream_->fps * 5) == 1; }
  /// A sender report (RFC 3550, section 6.4.1) without report blocks.
  [[nodiscard]] std::string Report() const;
  /// The same as the connection carries it.
  [[nodiscard]] std::string InterleavedReport() const;

 private:
  [[nodiscard]] const RtpClip::Unit& Current() const { return clip_->units[position_ % clip_->units.size()]; }
  std::string Numbered(std::string packet);
  [[nodiscard]] uint64_t TimeStamp() const;
  std::string OwnRequest();

  const Fault fault_;
  const StreamConfig* stream_ = nullptr;
  const RtpClip* clip_ = nullptr;
  int channel_ = 0;
  std::string session_;
  int ownRequests_ = 0;
  size_t position_ = 0;
  size_t unitsSent_ = 0;
  size_t keysSent_ = 0;
  uint64_t packetsSent_ = 0;
  uint64_t octetsSent_ = 0;
};

}  // namespace simcam
