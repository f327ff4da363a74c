#include "simcam/rtp_player.h"

#include <array>
#include <chrono>
#include <random>
#include <utility>

namespace simcam {
namespace {

constexpr int kVideoClock = 90000;          ///< Hz, for all our payload formats
constexpr uint64_t kFirstSequence = 65500;  ///< so that the 16 bits overflow early

unsigned char ByteOf(uint64_t value, int index) { return static_cast<unsigned char>(value >> (8 * index)); }

void Store16(std::string& bytes, size_t at, uint64_t value) {
  bytes[at] = static_cast<char>(ByteOf(value, 1));
  bytes[at + 1] = static_cast<char>(ByteOf(value, 0));
}

void Store32(std::string& bytes, size_t at, uint64_t value) {
  Store16(bytes, at, value >> 16);
  Store16(bytes, at + 2, value);
}

/// RFC 2326, section 10.12: '$', channel, 16 bits of length.
std::string Interleave(int channel, const std::string& packet) {
  std::string frame = {'$', static_cast<char>(channel), 0, 0};
  Store16(frame, 2, packet.size());
  return frame + packet;
}

/// Bytes that belong to no frame: such as no client takes for one, or beginnings of frames that are none, on a foreign
/// channel and on the stream's own.
std::string StrayBytes(Fault fault, size_t turn) {
  using std::string_literals::operator""s;
  static const std::array<std::string, 3> kPlain = {"\0\0\0\0\0"s, "\r\n\r\n"s, "stray"s};
  static const std::array<std::string, 2> kFrameLike = {"$\x7f\0\x40xyz"s, "$\0\0\x08hello"s};
  if (fault == Fault::kStrayBytes) return kPlain[turn % kPlain.size()];
  return fault == Fault::kStrayFrames ? kFrameLike[turn % kFrameLike.size()] : std::string();
}

/// Flips bytes of the payload, but not of its first ones, so that the packet is still taken for what it was.
void Damage(std::string& packet) {
  for (size_t i = 40; i < packet.size(); i += 7) packet[i] = static_cast<char>(packet[i] ^ 0x5a);
}

}  // namespace

void RtpPlayer::Start(const StreamConfig& stream, const RtpClip& clip, int channel, const std::string& session) {
  stream_ = &stream;
  clip_ = &clip;
  channel_ = channel;
  session_ = session;
  // A clip begins, and begins again, with a key frame.
  position_ = stream.randomStart ? std::random_device()() % clip.units.size()
                                 : clip.units.size() - static_cast<size_t>(stream.secondsBeforeKeyFrame * stream.fps);
}

void RtpPlayer::SkipToKeyFrame() {
  while (!IsAtKeyFrame()) ++position_;
}

std::vector<std::string> RtpPlayer::NextPackets() {
  const RtpClip::Unit& unit = Current();
  const bool firstKey = unit.key && keysSent_ == 0;
  const size_t middle = unit.packets.size() / 2;
  std::vector<std::string> packets;
  for (size_t i = 0; i < unit.packets.size(); ++i) {
    std::string packet = Numbered(unit.packets[i]);
    if (firstKey && fault_ == Fault::kLostPacket && i == middle) continue;
    if (firstKey && fault_ == Fault::kDamagedKeyFrame && i >= middle) Damage(packet);
    packets.push_back(std::move(packet));
  }
  if (unit.key) ++keysSent_;
  ++unitsSent_;
  ++position_;
  return packets;
}

std::string RtpPlayer::NextUnit() {
  const bool asks = fault_ == Fault::kRequestInStream && IsAtKeyFrame();
  const std::vector<std::string> packets = NextPackets();
  std::string bytes;
  for (size_t i = 0; i < packets.size(); ++i) {
    bytes += StrayBytes(fault_, packetsSent_ - packets.size() + i + 1);
    if (asks && i == packets.size() / 2) bytes += OwnRequest();
    bytes += Interleave(channel_, packets[i]);
  }
  return bytes;
}

/// Sets sequence number, time stamp (later by what stands in its place) and source of a packet (RFC 3550, section 5.1).
std::string RtpPlayer::Numbered(std::string packet) {
  Store16(packet, 2, kFirstSequence + packetsSent_++);
  Store32(packet, 4, TimeStamp() + static_cast<unsigned char>(packet[7]));
  Store32(packet, 8, kSource);
  octetsSent_ += packet.size() - 12;
  return packet;
}

uint64_t RtpPlayer::TimeStamp() const {
  return 1000000 + unitsSent_ * kVideoClock / static_cast<uint64_t>(stream_->fps);
}

std::string RtpPlayer::OwnRequest() {
  return "OPTIONS rtsp://client/ RTSP/1.0\r\nCSeq: " + std::to_string(++ownRequests_) + "\r\n" + session_ + "\r\n\r\n";
}

std::string RtpPlayer::Report() const {
  constexpr uint64_t kSecondsTo1970 = 2208988800;  // NTP counts from 1900
  std::string report(28, '\0');
  Store16(report, 0, 0x80C8);
  Store16(report, 2, 6);
  Store32(report, 4, kSource);
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  Store32(report, 8, kSecondsTo1970 + static_cast<uint64_t>(std::chrono::floor<std::chrono::seconds>(now).count()));
  Store32(report, 16, TimeStamp());
  Store32(report, 20, packetsSent_);
  Store32(report, 24, octetsSent_);
  return report;
}

std::string RtpPlayer::InterleavedReport() const { return Interleave(channel_ + 1, Report()); }

}  // namespace simcam
