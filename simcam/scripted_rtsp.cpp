#include "simcam/scripted_rtsp.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <random>
#include <string_view>

namespace simcam {
namespace {

using SteadyClock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr uint32_t kSsrc = 0x51AC0DE5;
constexpr int kVideoClock = 90000;  ///< Hz, for all our payload formats
constexpr int kEnforcedTimeout = 5;
constexpr int kUsualTimeout = 60;

enum class Phase { kConnect, kDescribe, kSetup, kPlay };

const char* Reason(int status) {
  constexpr std::pair<int, const char*> kReasons[] = {{200, "OK"},
                                                      {400, "Bad Request"},
                                                      {401, "Unauthorized"},
                                                      {403, "Forbidden"},
                                                      {404, "Not Found"},
                                                      {453, "Not Enough Bandwidth"},
                                                      {454, "Session Not Found"},
                                                      {455, "Method Not Valid in This State"},
                                                      {461, "Unsupported Transport"},
                                                      {501, "Not Implemented"},
                                                      {503, "Service Unavailable"}};
  for (const auto& [code, text] : kReasons) {
    if (code == status) return text;
  }
  return "Because";
}

std::optional<Phase> SilentPhase(Fault fault) {
  switch (fault) {
    case Fault::kSilentAfterDescribe:
      return Phase::kDescribe;
    case Fault::kSilentAfterSetup:
      return Phase::kSetup;
    case Fault::kSilentAfterPlay:
      return Phase::kPlay;
    default:
      return std::nullopt;
  }
}

std::optional<Phase> ClosingPhase(Fault fault) {
  switch (fault) {
    case Fault::kCloseAfterDescribe:
      return Phase::kDescribe;
    case Fault::kCloseAfterSetup:
      return Phase::kSetup;
    case Fault::kCloseAfterPlay:
      return Phase::kPlay;
    default:
      return std::nullopt;
  }
}

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

/// One RTSP connection. Single-threaded.
class Conversation {
 public:
  Conversation(const CameraConfig& camera, Login& login, CameraLog& log, const std::vector<StreamConfig>& streams,
               const std::vector<std::shared_ptr<const RtpClip>>& clips, const Socket& socket)
      : camera_(camera),
        fault_(camera.fault.fault),
        login_(login),
        log_(log),
        streams_(streams),
        clips_(clips),
        socket_(socket) {}

  void Run(std::string received) {
    received_ = std::move(received);
    HandleReceived();
    while (open_) {
      if (socket_.WaitReadable(TimeToNextUnit())) {
        open_ = open_ && socket_.Receive(received_);
        HandleReceived();
      }
      if (open_ && playing_ && TimeToNextUnit() == milliseconds(0)) SendNextUnit();
      if (SessionTimedOut()) open_ = false;
    }
  }

 private:
  // -- requests

  /// Takes interleaved RTCP and whole requests off the received bytes.
  void HandleReceived() {
    while (open_ && !received_.empty()) {
      if (received_[0] == '$') {
        if (!TakeInterleaved()) return;
      } else if (received_.starts_with("RTSP/")) {
        if (!TakeAnswer()) return;
      } else {
        const auto request = TakeRequest(received_);
        if (!request) return;
        Handle(*request);
      }
    }
  }

  bool TakeInterleaved() {
    if (received_.size() < 4) return false;
    const size_t size = static_cast<unsigned char>(received_[2]) * 256U + static_cast<unsigned char>(received_[3]);
    if (received_.size() < 4 + size) return false;
    HandleRtcp(std::string_view(received_).substr(4, size));
    received_.erase(0, 4 + size);
    return true;
  }

  /// A client's answer to a request of ours needs no reaction.
  bool TakeAnswer() { return TakeRequest(received_).has_value(); }

  /// RFC 4585, section 6.1: payload-specific feedback is type 206; format 1 is PLI, 4 is FIR (RFC 5104).
  void HandleRtcp(std::string_view compound) {
    while (compound.size() >= 4) {
      const auto type = static_cast<unsigned char>(compound[1]);
      const auto format = static_cast<unsigned char>(compound[0]) & 0x1f;
      if (type == 206 && (format == 1 || format == 4)) {
        log_.CountPli();
        if (stream_ != nullptr && stream_->honoursPli) position_ = NextKeyFrame(position_);
      }
      const size_t words = static_cast<unsigned char>(compound[2]) * 256U + static_cast<unsigned char>(compound[3]) + 1;
      compound.remove_prefix(std::min(compound.size(), words * 4));
    }
  }

  void Handle(const Request& request) {
    log_.CountRequest(request);
    lastRequest_ = SteadyClock::now();
    if (SilentPhase(fault_) == phase_) return;
    if (request.method.empty()) return Answer(request, 400);
    if (request.method == "OPTIONS") return Answer(request, 200, {"Public: OPTIONS, DESCRIBE, SETUP, PLAY, TEARDOWN"});
    if (!LoggedIn(request)) return;
    if (fault_ == Fault::kStatus && request.method == camera_.fault.method)
      return Answer(request, camera_.fault.status);
    if (request.method == "DESCRIBE") return Describe(request);
    if (request.method == "SETUP") return SetUp(request);
    if (session_.empty()) return Answer(request, request.method == "PLAY" ? 455 : 454);
    if (!request.Header("Session").starts_with(session_)) return Answer(request, 454);
    if (request.method == "PLAY") return Play(request);
    if (request.method == "GET_PARAMETER" || request.method == "SET_PARAMETER") return Answer(request, 200);
    if (request.method != "TEARDOWN") return Answer(request, 501);
    Answer(request, 200);
    playing_ = false;
    open_ = false;
  }

  bool LoggedIn(const Request& request) {
    const Verdict verdict = login_.Check(request.method, request.target, request.Header("Authorization"));
    if (verdict.status == 200) return true;
    std::vector<std::string> headers;
    for (const std::string& challenge : verdict.challenges) headers.push_back("WWW-Authenticate: " + challenge);
    const bool closes = fault_ == Fault::kCloseWith401 && verdict.status == 401;
    if (closes) headers.emplace_back("Connection: close");
    Answer(request, verdict.status, headers);
    if (closes) open_ = false;
    return false;
  }

  // -- addresses

  static std::string WithoutSlash(std::string path) {
    while (path.size() > 1 && path.ends_with('/')) path.pop_back();
    return path;
  }

  [[nodiscard]] std::string ControlPath(const StreamConfig& stream) const {
    return fault_ == Fault::kControlAbsolute ? "/media/video" : stream.path + "/trackID=1";
  }

  /// The address of one of our paths, as the client called us.
  static std::string AddressOf(const Request& request, const std::string& path) {
    const size_t scheme = request.target.find("://");
    if (scheme == std::string::npos) return path;
    return request.target.substr(0, request.target.find_first_of("/?", scheme + 3)) + path;
  }

  bool ChooseStream(const std::string& path, bool control) {
    for (size_t i = 0; i < streams_.size(); ++i) {
      const StreamConfig& stream = streams_[i];
      if (path != (control ? ControlPath(stream) : stream.path)) continue;
      stream_ = &stream;
      clip_ = clips_[i].get();
      return true;
    }
    return false;
  }

  // -- methods

  void Describe(const Request& request) {
    if (!ChooseStream(WithoutSlash(request.Path()), false)) return Answer(request, 404);
    std::vector<std::string> headers = {"Content-Type: application/sdp"};
    if (fault_ != Fault::kControlNoBase) {
      const char* end = fault_ == Fault::kControlNoSlash ? "" : "/";
      headers.push_back("Content-Base: " + AddressOf(request, stream_->path) + end);
    }
    Answer(request, 200, headers, Sdp(request));
    Enter(Phase::kDescribe);
  }

  [[nodiscard]] std::string Sdp(const Request& request) const {
    if (fault_ == Fault::kBadSdp) return "<html><body>camera</body></html>\r\n";
    const bool absolute = fault_ == Fault::kControlAbsolute;
    std::string sdp = "v=0\r\no=- 1 1 IN IP4 127.0.0.1\r\ns=camera\r\nc=IN IP4 0.0.0.0\r\nt=0 0\r\na=control:" +
                      (absolute ? AddressOf(request, stream_->path) : "*") + "\r\na=range:npt=now-\r\n" + clip_->media;
    if (stream_->honoursPli) sdp += "a=rtcp-fb:* nack pli\r\n";
    return sdp + "a=control:" + (absolute ? AddressOf(request, "/media/video") : "trackID=1") + "\r\n";
  }

  void SetUp(const Request& request) {
    if (!ChooseStream(WithoutSlash(request.Path()), true)) return Answer(request, 404);
    const std::string transport = request.Header("Transport");
    if (transport.find("RTP/AVP/TCP") == std::string::npos) return Answer(request, 461);
    channel_ = 0;
    const size_t wish = transport.find("interleaved=");
    if (wish != std::string::npos) channel_ = std::atoi(transport.c_str() + wish + 12);  // NOLINT(cert-err34-c)
    if (fault_ == Fault::kOtherChannels) channel_ = 4;
    session_ = std::to_string(std::random_device()());
    log_.CountSession();
    Answer(request, 200,
           {"Transport: RTP/AVP/TCP;unicast;interleaved=" + std::to_string(channel_) + "-" +
                std::to_string(channel_ + 1) + ";ssrc=51AC0DE5",
            SessionHeader() + ";timeout=" + std::to_string(Timeout())});
    Enter(Phase::kSetup);
  }

  void Play(const Request& request) {
    const std::string path = WithoutSlash(request.Path());
    if (path != stream_->path && path != ControlPath(*stream_)) return Answer(request, 404);
    position_ = FirstPosition();
    nextUnit_ = SteadyClock::now();
    if (fault_ == Fault::kRtpBeforePlay) held_ = NextUnitBytes();
    Answer(request, 200, {SessionHeader(), "Range: npt=now-"});
    playing_ = SilentPhase(fault_) != Phase::kPlay;
    Enter(Phase::kPlay);
  }

  /// The session has reached a phase; some cameras leave then.
  void Enter(Phase phase) {
    phase_ = phase;
    if (ClosingPhase(fault_) == phase) open_ = false;
  }

  // -- answers

  [[nodiscard]] std::string SessionHeader() const { return "Session: " + session_; }
  [[nodiscard]] int Timeout() const { return fault_ == Fault::kSessionTimeout ? kEnforcedTimeout : kUsualTimeout; }

  [[nodiscard]] bool SessionTimedOut() const {
    return fault_ == Fault::kSessionTimeout && !session_.empty() &&
           SteadyClock::now() - lastRequest_ > std::chrono::seconds(kEnforcedTimeout);
  }

  void Answer(const Request& request, int status, const std::vector<std::string>& headers = {},
              const std::string& body = {}) {
    std::string head = "RTSP/1.0 " + std::to_string(status) + " " + Reason(status) + "\r\n";
    if (fault_ != Fault::kNoCseq) head += "CSeq: " + request.Header("CSeq") + "\r\n";
    for (const std::string& header : headers) head += header + "\r\n";
    if (request.method == "DESCRIBE" && status == 200) return SendDescription(head, body);
    if (!body.empty()) head += "Content-Length: " + std::to_string(body.size()) + "\r\n";
    Send(std::exchange(held_, {}) + head + "\r\n" + body);
  }

  void SendDescription(const std::string& head, const std::string& body) {
    const std::string whole = head + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
    const std::string claim = head + "Content-Length: 2147483647\r\n\r\n" + body;
    switch (fault_) {
      case Fault::kDrip:
        open_ = socket_.Drip(whole);
        return;
      case Fault::kHugeLength:
        return Send(claim);
      case Fault::kEndlessBody:
        return SendForEver(claim, "a=tool:" + std::string(1000, 'x') + "\r\n");
      case Fault::kEndlessHeader:
        return SendForEver(head, "X-More: " + std::string(1000, 'x') + "\r\n");
      default:
        return Send(whole);
    }
  }

  void SendForEver(const std::string& first, const std::string& again) {
    Send(first);
    while (open_) Send(again);
  }

  void Send(const std::string& bytes) { open_ = open_ && socket_.Send(bytes); }

  // -- RTP

  [[nodiscard]] size_t NextKeyFrame(size_t from) const {
    while (!clip_->units[from % clip_->units.size()].key) ++from;
    return from;
  }

  [[nodiscard]] size_t FirstPosition() const {
    if (stream_->randomStart) return std::random_device()() % clip_->units.size();
    // A clip begins, and begins again, with a key frame.
    return clip_->units.size() - static_cast<size_t>(stream_->secondsBeforeKeyFrame * stream_->fps);
  }

  [[nodiscard]] milliseconds TimeToNextUnit() const {
    constexpr milliseconds kIdle(200);
    if (!playing_) return kIdle;
    const auto left = std::chrono::ceil<milliseconds>(nextUnit_ - SteadyClock::now());
    return std::clamp(left, milliseconds(0), kIdle);
  }

  void SendNextUnit() {
    nextUnit_ += std::chrono::microseconds(1000000 / stream_->fps);
    const bool key = clip_->units[position_ % clip_->units.size()].key;
    const std::string bytes = NextUnitBytes();
    if (key && (fault_ == Fault::kSilentInUnit || fault_ == Fault::kCloseInUnit)) {
      playing_ = false;
      Send(bytes.substr(0, bytes.size() / 2));
      open_ = open_ && fault_ != Fault::kCloseInUnit;
      return;
    }
    Send(bytes);
    if (unitsSent_ % static_cast<size_t>(stream_->fps * 5) == 1) Send(Interleave(channel_ + 1, SenderReport()));
  }

  /// The unit at the play position, framed and numbered, with what the fault does to it; moves on.
  std::string NextUnitBytes() {
    const RtpClip::Unit& unit = clip_->units[position_++ % clip_->units.size()];
    const bool firstKey = unit.key && keysSent_ == 0;
    const size_t middle = unit.packets.size() / 2;
    std::string bytes;
    for (size_t i = 0; i < unit.packets.size(); ++i) {
      std::string packet = Numbered(unit.packets[i]);
      if (firstKey && fault_ == Fault::kLostPacket && i == middle) continue;
      if (firstKey && fault_ == Fault::kDamagedKeyFrame && i >= middle) Damage(packet);
      bytes += StrayBytes(fault_, packetsSent_);
      if (fault_ == Fault::kRequestInStream && unit.key && i == middle) bytes += OwnRequest();
      bytes += Interleave(channel_, packet);
    }
    if (unit.key) ++keysSent_;
    ++unitsSent_;
    return bytes;
  }

  /// Sets sequence number, time stamp and source of a packet (RFC 3550, section 5.1).
  std::string Numbered(std::string packet) {
    Store16(packet, 2, firstSequence_ + packetsSent_++);
    Store32(packet, 4, TimeStamp());
    Store32(packet, 8, kSsrc);
    octetsSent_ += packet.size() - 12;
    return packet;
  }

  [[nodiscard]] uint64_t TimeStamp() const {
    return 1000000 + unitsSent_ * kVideoClock / static_cast<uint64_t>(stream_->fps);
  }

  /// Flips bytes of the payload, but not of its first ones, so that the packet is still taken for what it was.
  static void Damage(std::string& packet) {
    for (size_t i = 40; i < packet.size(); i += 7) packet[i] = static_cast<char>(packet[i] ^ 0x5a);
  }

  std::string OwnRequest() {
    return "OPTIONS rtsp://client/ RTSP/1.0\r\nCSeq: " + std::to_string(++ownRequests_) + "\r\n" + SessionHeader() +
           "\r\n\r\n";
  }

  /// RFC 3550, section 6.4.1, without report blocks.
  [[nodiscard]] std::string SenderReport() const {
    constexpr uint64_t kSecondsTo1970 = 2208988800;  // NTP counts from 1900
    std::string report(28, '\0');
    Store16(report, 0, 0x80C8);
    Store16(report, 2, 6);
    Store32(report, 4, kSsrc);
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    Store32(report, 8, kSecondsTo1970 + static_cast<uint64_t>(std::chrono::floor<std::chrono::seconds>(now).count()));
    Store32(report, 16, TimeStamp());
    Store32(report, 20, packetsSent_);
    Store32(report, 24, octetsSent_);
    return report;
  }

  const CameraConfig& camera_;
  const Fault fault_;
  Login& login_;
  CameraLog& log_;
  const std::vector<StreamConfig>& streams_;
  const std::vector<std::shared_ptr<const RtpClip>>& clips_;  ///< one for each of streams_
  const Socket& socket_;

  bool open_ = true;
  std::string received_;
  std::string held_;  ///< sent ahead of the next answer
  Phase phase_ = Phase::kConnect;
  SteadyClock::time_point lastRequest_ = SteadyClock::now();
  const StreamConfig* stream_ = nullptr;
  const RtpClip* clip_ = nullptr;
  std::string session_;
  int channel_ = 0;
  int ownRequests_ = 0;

  bool playing_ = false;
  SteadyClock::time_point nextUnit_;
  size_t position_ = 0;
  size_t unitsSent_ = 0;
  size_t keysSent_ = 0;
  uint64_t packetsSent_ = 0;
  uint64_t octetsSent_ = 0;
  uint64_t firstSequence_ = 65500;  ///< so that the 16 bits overflow early
};

}  // namespace

ScriptedRtsp::ScriptedRtsp(const CameraConfig& camera, Login& login, CameraLog& log, ClipStore& clips)
    : camera_(camera), login_(login), log_(log), streams_(camera.RtspStreams()) {
  for (const StreamConfig& stream : streams_) clips_.push_back(clips.GetRtp(stream, camera.fault.fault));
}

void ScriptedRtsp::Serve(const Socket& connection, std::string received) {
  Conversation(camera_, login_, log_, streams_, clips_, connection).Run(std::move(received));
}

}  // namespace simcam
