#include "simcam/scripted_rtsp.h"

#include <algorithm>
#include <chrono>
#include <random>
#include <string_view>

#include "simcam/feedback.h"
#include "simcam/phase.h"
#include "simcam/rtp_player.h"
#include "simcam/sdp_faults.h"
#include "simcam/transport.h"

namespace simcam {
namespace {

using SteadyClock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int kEnforcedTimeout = 5;
constexpr int kUsualTimeout = 60;

/// One RTSP connection. Single-threaded.
class Conversation {
 public:
  Conversation(const CameraConfig& camera, Login& login, CameraLog& log, const SyncPoints& syncPoints,
               const std::vector<StreamConfig>& streams, const std::vector<std::shared_ptr<const RtpClip>>& clips,
               const Socket& socket)
      : camera_(camera),
        fault_(camera.fault.fault),
        login_(login),
        log_(log),
        streams_(streams),
        clips_(clips),
        socket_(socket),
        transport_(camera.fault),
        wishes_(syncPoints) {}

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

  void HandleRtcp(std::string_view compound) {
    const Feedback feedback = ReadFeedback(compound, RtpPlayer::kSource);
    if (feedback.pictureLoss) log_.CountPli();
    if (playing_ && wishes_.Heeds(feedback)) player_.SkipToKeyFrame();
  }

  void Handle(const Request& request) {
    log_.CountRequest(request);
    lastRequest_ = SteadyClock::now();
    if (PhaseOf(fault_, &PhaseFault::silent) == phase_) return;
    if (request.method.empty()) return Answer(request, 400);
    hasOptions_ = hasOptions_ || request.method == "OPTIONS";
    if (fault_ == Fault::kOptionsFirst && !hasOptions_) return Answer(request, 455);
    if (request.method == "OPTIONS") return Answer(request, 200, {"Public: OPTIONS, DESCRIBE, SETUP, PLAY, TEARDOWN"});
    if (WantsLogin(request) && !LoggedIn(request)) return;
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

  [[nodiscard]] bool WantsLogin(const Request& request) const {
    return fault_ != Fault::kLoginAtPlay || request.method == "PLAY" || !request.Header("Authorization").empty();
  }

  bool LoggedIn(const Request& request) {
    const Verdict verdict = login_.Check(request.method, request.target, request.Header("Authorization"));
    if (verdict.status == 200) return true;
    const bool isWrong = !request.Header("Authorization").empty();
    if (isWrong && (fault_ == Fault::kHangUpOnLogin || fault_ == Fault::kResetOnLogin)) {
      if (fault_ == Fault::kResetOnLogin) socket_.Reset();
      return open_ = false;
    }
    std::vector<std::string> headers;
    for (const std::string& challenge : verdict.challenges) headers.push_back("WWW-Authenticate: " + challenge);
    if (fault_ == Fault::kCloseWith401) headers.emplace_back("Connection: close");
    if (fault_ == Fault::kHangUpWith401) socket_.SendAtEnd();  // or a quick login would arrive before the end
    Answer(request, verdict.status, headers);
    const Fault leaving[] = {Fault::kCloseWith401, Fault::kHangUpWith401, Fault::kHangUpBehind401};
    if (std::ranges::find(leaving, fault_) != std::end(leaving)) open_ = false;
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
    const auto isThere = [&](const StreamConfig& stream) {
      return path == (control ? ControlPath(stream) : stream.path);
    };
    auto chosen = std::ranges::find_if(streams_, isThere);
    if (chosen == streams_.end() && !control) chosen = std::ranges::find_if(streams_, &StreamConfig::isAnyPath);
    if (chosen == streams_.end()) return false;
    stream_ = &*chosen;
    clip_ = clips_[static_cast<size_t>(chosen - streams_.begin())].get();
    return true;
  }

  // -- methods

  void Describe(const Request& request) {
    const std::string& there = camera_.redirectTo;  // a path alone, or the address of another port, may be our own
    const bool isThere = request.Path() == there || request.target == there;
    if (fault_ == Fault::kRedirectRtsp && !isThere) return Answer(request, 302, {"Location: " + camera_.redirectTo});
    if (!ChooseStream(request.Path(), false)) return Answer(request, 404);
    std::vector<std::string> headers = {"Content-Type: application/sdp"};
    if (fault_ != Fault::kControlNoBase) {
      const char* end = fault_ == Fault::kControlNoSlash      ? ""
                        : fault_ == Fault::kControlBreaksLine ? "/\rX-Injected: 1"
                                                              : "/";
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
    if (stream_->honoursFir) sdp += "a=rtcp-fb:* ccm fir\r\n";
    sdp += "a=control:" + (absolute ? AddressOf(request, "/media/video") : "trackID=1") + "\r\n";
    return SpoiltSdp(fault_, std::move(sdp));
  }

  void SetUp(const Request& request) {
    if (!ChooseStream(WithoutSlash(request.Path()), true)) return Answer(request, 404);
    const Granted granted = transport_.Grant(request.Header("Transport"), stream_->isUdpAlone);
    if (granted.status != 200) return Answer(request, granted.status);
    if (session_.empty()) log_.CountSession();
    if (session_.empty()) session_ = std::to_string(std::random_device()());
    Answer(request, 200,
           {"Transport: " + granted.transport, SessionHeader() + ";timeout=" + std::to_string(Timeout())});
    Enter(Phase::kSetup);
  }

  void Play(const Request& request) {
    const std::string path = WithoutSlash(request.Path());
    if (path != WithoutSlash(stream_->path) && path != ControlPath(*stream_)) return Answer(request, 404);
    player_.Start(*stream_, *clip_, transport_.Channel(), SessionHeader());
    log_.TakeBitRate(clip_->BitRate(stream_->fps));
    nextUnit_ = SteadyClock::now();
    wishes_.Begin(*stream_);
    if (fault_ == Fault::kRtpBeforePlay) held_ = player_.NextUnit();
    Answer(request, 200, {SessionHeader(), "Range: npt=now-"});
    playing_ = PhaseOf(fault_, &PhaseFault::silent) != Phase::kPlay;
    Enter(Phase::kPlay);
  }

  /// The session has reached a phase; some cameras leave then.
  void Enter(Phase phase) {
    phase_ = phase;
    if (PhaseOf(fault_, &PhaseFault::closing) == phase) open_ = false;
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
    if (!camera_.serverName.empty()) head += "Server: " + camera_.serverName + "\r\n";
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

  [[nodiscard]] milliseconds TimeToNextUnit() const {
    constexpr milliseconds kIdle(200);
    if (!playing_) return kIdle;
    const auto left = std::chrono::ceil<milliseconds>(nextUnit_ - SteadyClock::now());
    return std::clamp(left, milliseconds(0), kIdle);
  }

  void SendNextUnit() {
    nextUnit_ += std::chrono::microseconds(1000000 / stream_->fps);
    if (wishes_.HeedsSync()) player_.SkipToKeyFrame();
    if (UdpSender* udp = transport_.Udp()) return SendNextUnitOver(*udp);
    const bool key = player_.IsAtKeyFrame();
    const std::string bytes = player_.NextUnit();
    if (key && (fault_ == Fault::kSilentInUnit || fault_ == Fault::kCloseInUnit)) {
      playing_ = false;
      Send(bytes.substr(0, bytes.size() / 2));
      open_ = open_ && fault_ != Fault::kCloseInUnit;
      return;
    }
    Send(bytes);
    if (player_.IsReportDue()) Send(player_.InterleavedReport());
  }

  void SendNextUnitOver(UdpSender& udp) {
    while (const auto control = udp.Receive()) HandleRtcp(*control);
    udp.SendUnit(player_.NextPackets());
    if (player_.IsReportDue()) udp.SendReport(player_.Report());
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
  bool hasOptions_ = false;
  Phase phase_ = Phase::kConnect;
  SteadyClock::time_point lastRequest_ = SteadyClock::now();
  const StreamConfig* stream_ = nullptr;
  const RtpClip* clip_ = nullptr;
  std::string session_;
  Transport transport_;

  bool playing_ = false;
  SteadyClock::time_point nextUnit_;
  RtpPlayer player_{fault_};
  KeyFrameWishes wishes_;
};

}  // namespace

ScriptedRtsp::ScriptedRtsp(const CameraConfig& camera, Login& login, CameraLog& log, const SyncPoints& syncPoints,
                           ClipStore& clips)
    : camera_(camera), login_(login), log_(log), syncPoints_(syncPoints), streams_(camera.RtspStreams()) {
  for (const StreamConfig& stream : streams_) clips_.push_back(clips.GetRtp(stream, camera.fault.fault));
}

void ScriptedRtsp::Serve(const Socket& connection, std::string received) {
  Conversation(camera_, login_, log_, syncPoints_, streams_, clips_, connection).Run(std::move(received));
}

}  // namespace simcam
