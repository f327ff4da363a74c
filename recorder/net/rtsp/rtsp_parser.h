#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace recorder {

/// An answer or a request of RTSP 1.0 (RFC 2326).
struct RtspMessage {
  int status = 0;      ///< of an answer; 0 for a request
  std::string method;  ///< of a request; "" for an answer
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;

  /// Value of the first header of that name, "" when there is none.
  std::string_view Header(std::string_view name) const;
  /// Values of all headers of that name.
  std::vector<std::string_view> Headers(std::string_view name) const;
};

/// One RTP or RTCP packet out of the connection (RFC 2326 section 10.12).
struct InterleavedPacket {
  bool isControl = false;               ///< RTCP
  std::span<const std::uint8_t> bytes;  ///< without the four bytes of framing
};

/// Cuts what a camera sends into messages and packets. Claimed lengths are checked before memory is taken; it never
/// holds more than one header block, one body and one read.
class RtspParser {
 public:
  enum class Item {
    kNone,       ///< more bytes are needed
    kPacket,     ///< Packet() is valid until the next call of Next() or Space()
    kMessage,    ///< Message() is valid until the next call of Next()
    kForeign,    ///< this is not RTSP
    kMalformed,  ///< RTSP, but a message without an end or larger than anyone needs
  };

  /// From now on there are packets on these channels, and bytes that belong nowhere are passed over instead of
  /// reported.
  void ExpectPackets(std::uint8_t rtpChannel, std::uint8_t rtcpChannel);

  /// Room for bytes from the camera; Filled() tells how many there came.
  std::span<std::uint8_t> Space();
  void Filled(std::size_t size);

  Item Next();
  const RtspMessage& Message() const { return message_; }
  const InterleavedPacket& Packet() const { return packet_; }
  /// True after kNone when a message or packet has begun to come.
  bool HasPart() const { return begin_ < end_; }

 private:
  std::string_view Unread() const;
  Item NextHere();
  Item NextPacket();
  Item NextMessage();
  bool SkipStrayBytes();

  std::vector<std::uint8_t> buffer_;
  std::size_t begin_ = 0;  // of what was not yet handed out
  std::size_t end_ = 0;
  bool expectsPackets_ = false;
  std::uint8_t rtpChannel_ = 0;
  std::uint8_t rtcpChannel_ = 0;
  RtspMessage message_;
  InterleavedPacket packet_;
};

}  // namespace recorder
