#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "recorder/decode/libav.h"

namespace recorder {

/// Turns the RTP packets of one video into the bytes of its elementary stream: FFmpeg's payload formats behind an
/// interface of one packet at a time. One thread at a time.
class Depacketizer {
 public:
  using SendControl = std::function<void(std::span<const std::uint8_t> packet)>;

  /// For the one video of the session description. `sendControl` is called out of Feed with receiver reports (RTCP) for
  /// the camera. Null when the payload format is not known.
  static std::unique_ptr<Depacketizer> Open(const std::string& description, SendControl sendControl);

  Depacketizer(const Depacketizer&) = delete;
  Depacketizer& operator=(const Depacketizer&) = delete;

  /// Four-character code of the video's codec; 0 for one that the recorder does not know.
  std::uint32_t Codec() const;

  /// Codec configuration from the session description, valid as long as this object; may be empty.
  std::span<const std::uint8_t> Configuration() const;

  /// Takes one whole RTP or RTCP packet and appends to `stream` what it completes: with start codes where the codec has
  /// them, in pieces smaller than an access unit.
  void Feed(std::span<const std::uint8_t> packet, std::vector<std::uint8_t>& stream);

 private:
  explicit Depacketizer(SendControl sendControl) : sendControl_(std::move(sendControl)) {}
  bool OpenFormat(const std::string& description);
  static int ReadPacket(void* self, std::uint8_t* buffer, int size);
  static int WritePacket(void* self, std::uint8_t* bytes, int size);

  SendControl sendControl_;
  std::span<const std::uint8_t> pending_;  // the packet that the format will read next
  IoContext packets_;
  FormatContext format_;
  AvPacket piece_;
};

}  // namespace recorder
