#include "recorder/net/rtsp/rtsp_client.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "recorder/net/camera_url.h"
#include "recorder/net/login/camera_login.h"
#include "recorder/net/percent.h"
#include "recorder/utility/text.h"
#include "recorder/utility/translate.h"

namespace recorder {
namespace {

constexpr std::chrono::seconds kDefaultSessionTimeout{60};  // RFC 2326 section 12.37
constexpr int kMaxRedirects = 3;
constexpr int kMaxChallenges = 2;  // of one request: the login, and a nonce that has grown stale meanwhile
constexpr std::size_t kMaxEarlySize = std::size_t{8} << 20;
constexpr int kUnauthorized = 401;

// With 403 the user is known, but not allowed. Any other status of 300 or more is kNotUnderstood. So is 461
// (unsupported transport): a camera that grants no interleaved video will not do so later either, which is what "busy"
// would promise.
constexpr std::pair<int, Outcome> kRtspStatusOutcomes[] = {
    {kUnauthorized, Outcome::kLoginRefused},
    {403, Outcome::kLoginRefused},
    {404, Outcome::kNoSuchStream},
    {410, Outcome::kNoSuchStream},
    {453, Outcome::kBusy},
    {454, Outcome::kNoSuchStream},
    {503, Outcome::kBusy},
};

bool IsSuccess(int status) { return status >= 200 && status < 300; }
bool IsRedirect(int status) { return status >= 300 && status < 400; }

Outcome OutcomeOf(int status) {
  return IsSuccess(status) ? Outcome::kOk : Translate(kRtspStatusOutcomes, status, Outcome::kNotUnderstood);
}

std::string MakeUri(const CameraAddress& address, std::string_view path) {
  const std::string_view host = WithoutBrackets(address.host);
  const std::string_view withoutZone = host.substr(0, host.find('%'));  // of a link-local address: our own affair
  return "rtsp://" + WithBrackets(withoutZone) + ':' + std::to_string(address.port) +
         (path.starts_with('/') ? "" : "/") + PercentEncoded(path, kAddressSigns);
}

}  // namespace

RtspClient::RtspClient(CameraAddress address, std::string_view path, Clock::time_point deadline, std::string userAgent)
    : address_(std::move(address)),
      uri_(MakeUri(address_, path)),
      deadline_(deadline),
      userAgent_(std::move(userAgent)),
      sessionTimeout_(kDefaultSessionTimeout) {}

RtspClient::~RtspClient() {
  if (session_.empty() || isClosed_) return;
  std::ignore = SendRequest("TEARDOWN", ResolveControl(base_, video_.sessionControl), "", Clock::now());
}

Outcome RtspClient::Describe() {
  Outcome outcome = DescribeHere();
  for (int redirects = 0; IsRedirect(parser_.Message().status) && redirects < kMaxRedirects; ++redirects) {
    outcome = FollowRedirect();
    if (outcome != Outcome::kOk) break;
    outcome = DescribeHere();
  }
  if (outcome == Outcome::kOk) outcome = ReadDescription();
  return Remembered(outcome);
}

Outcome RtspClient::Setup() {
  const std::string uri = ResolveControl(base_, video_.control);
  const Outcome outcome = Request("SETUP", uri, "Transport: RTP/AVP/TCP;unicast;interleaved=0-1\r\n");
  if (outcome != Outcome::kOk) return Remembered(outcome);
  ReadSession(parser_.Message().Header("Session"));
  return GrantsInterleaved(parser_.Message().Header("Transport")) ? Outcome::kOk : Outcome::kNotUnderstood;
}

Outcome RtspClient::Play() {
  const Outcome outcome = Request("PLAY", ResolveControl(base_, video_.sessionControl), "Range: npt=0.000-\r\n");
  keepAliveAt_ = Clock::now() + sessionTimeout_ / 2;
  return Remembered(outcome);
}

Outcome RtspClient::Read(InterleavedPacket& packet) {
  if (early_.empty()) return Remembered(NextPacket(packet));
  current_ = std::move(early_.front().bytes);
  packet = {early_.front().isControl, current_};
  early_.pop_front();
  return Outcome::kOk;
}

void RtspClient::SendControl(std::span<const std::uint8_t> packet) {
  std::vector<std::uint8_t> frame = {'$', rtcpChannel_, static_cast<std::uint8_t>(packet.size() >> 8),
                                     static_cast<std::uint8_t>(packet.size() & 0xff)};
  frame.insert(frame.end(), packet.begin(), packet.end());
  std::ignore = socket_.Write(frame, deadline_);
}

Outcome RtspClient::Remembered(Outcome outcome) const {
  RequestScope::Current().Remember(address_.host, address_.user, outcome);
  return outcome;
}

Outcome RtspClient::Connect() {
  parser_ = RtspParser();
  isClosed_ = false;
  const auto& [host, port, user, password] = address_;
  if (const auto refusal = RequestScope::Current().Refusal(host, port, user, password)) return *refusal;
  return socket_.Connect(address_.host, address_.port, deadline_);
}

Outcome RtspClient::DescribeHere() {
  if (const Outcome outcome = Connect(); outcome != Outcome::kOk) return outcome;
  return Request("DESCRIBE", uri_, "Accept: application/sdp\r\n");
}

/// Turns to where the camera points. Another host would be another camera, which must not be given this one's login; a
/// login of its own is what another port may ask for.
Outcome RtspClient::FollowRedirect() {
  const auto here = ParseCameraUrl(uri_);
  const auto there = ParseCameraUrl(parser_.Message().Header("Location"));
  const bool isOurs = here && there && there->scheme == "rtsp" && there->host == here->host;
  if (!isOurs) return Outcome::kNotUnderstood;
  address_.port = there->port;
  uri_ = MakeUri(address_, there->path);
  challenge_.reset();
  loginIsProven_ = false;
  RequestScope::Current().AllowPort(address_.host, address_.port);
  return Outcome::kOk;
}

Outcome RtspClient::ReadDescription() {
  const RtspMessage& answer = parser_.Message();
  if (!StartsWithIgnoreCase(Trimmed(answer.body), "v=")) return Outcome::kNotUnderstood;
  auto video = FindVideo(answer.body);
  if (!video) return Outcome::kNoVideo;
  video_ = std::move(*video);
  if (base_.empty()) base_ = answer.Header("Content-Base");
  if (base_.empty()) base_ = answer.Header("Content-Location");
  if (base_.empty()) base_ = uri_;
  return Outcome::kOk;
}

/// One request until it is answered by something else than a challenge that can be met. On kOk and on refusals the
/// answer is the parser's message.
Outcome RtspClient::Request(std::string_view method, const std::string& uri, const std::string& headers) {
  bool isRepeated = false;
  for (int challenges = 0;; ++challenges) {
    const bool loginIsSent = challenge_.has_value();
    Outcome outcome = Exchange(method, uri, headers);
    const bool isUnanswered = isClosed_ && !parser_.HasPart();
    if (isUnanswered && loginIsSent && !loginIsProven_) {
      // Some cameras close the connection behind their challenge; to close it over a login is others' way to refuse it.
      const bool mayRepeat = !isRepeated && session_.empty() && socket_.WasClosedUnread();
      if (!mayRepeat) return Outcome::kLoginRefused;
      isRepeated = true;
      if (outcome = Connect(); outcome != Outcome::kOk) return outcome;
      continue;
    }
    if (outcome != Outcome::kOk) return outcome;
    const int status = parser_.Message().status;
    if (status != kUnauthorized) {
      if (!loginIsProven_ && loginIsSent && IsSuccess(status)) {
        loginIsProven_ = true;
        LoginWorked(address_, challenge_->method);
      }
      return OutcomeOf(status);
    }
    if (!HasLogin(address_) || challenges == kMaxChallenges) return Outcome::kLoginRefused;
    outcome = TakeChallenge(loginIsSent);
    const bool isLast = EqualsIgnoreCase(parser_.Message().Header("Connection"), "close");
    if (outcome == Outcome::kOk && session_.empty() && isLast) outcome = Connect();
    if (outcome != Outcome::kOk) return outcome;
  }
}

Outcome RtspClient::Exchange(std::string_view method, const std::string& uri, const std::string& headers) {
  const Outcome outcome = SendRequest(method, uri, headers, deadline_);
  return outcome == Outcome::kOk ? AwaitAnswer() : outcome;
}

Outcome RtspClient::SendRequest(std::string_view method, const std::string& uri, const std::string& headers,
                                Clock::time_point until) {
  std::optional<std::string> login = "";
  if (challenge_) login = MakeAuthorization(address_, *challenge_, method, uri, {MakeClientNonce(), ++nonceUses_});
  if (!login) return Outcome::kLoginRefused;
  // All three hold what the camera said (Content-Base, Session, nonce), which must not become lines of their own.
  if (HoldsControls(uri) || HoldsControls(session_) || HoldsControls(*login)) return Outcome::kNotUnderstood;
  std::string request = std::string(method) + ' ' + uri + " RTSP/1.0\r\nCSeq: " + std::to_string(++lastSequence_) +
                        "\r\nUser-Agent: " + userAgent_ + "\r\n" + headers;
  if (!session_.empty()) request += "Session: " + session_ + "\r\n";
  if (challenge_) request += "Authorization: " + *login + "\r\n";
  request += "\r\n";
  const Outcome outcome =
      socket_.Write(std::span(reinterpret_cast<const std::uint8_t*>(request.data()), request.size()), until);
  isClosed_ = isClosed_ || outcome == Outcome::kNotUnderstood;
  return outcome;
}

/// Waits for the answer to the one request that is open: answers are taken in order, since some carry no CSeq.
Outcome RtspClient::AwaitAnswer() {
  for (;;) {
    Outcome outcome = Outcome::kOk;
    switch (parser_.Next()) {
      case RtspParser::Item::kNone:
        outcome = Fill(deadline_);
        break;
      case RtspParser::Item::kPacket:
        outcome = KeepEarly(parser_.Packet());
        break;
      case RtspParser::Item::kMessage:
        if (parser_.Message().status >= 200) return Outcome::kOk;
        if (parser_.Message().status == 0) AnswerRequest(parser_.Message());
        break;
      case RtspParser::Item::kForeign:
        return Outcome::kNotThisProtocol;
      case RtspParser::Item::kMalformed:
        return Outcome::kNotUnderstood;
    }
    if (outcome != Outcome::kOk) return outcome;
  }
}

Outcome RtspClient::Fill(Clock::time_point until) {
  std::size_t received = 0;
  const Outcome outcome = socket_.Read(parser_.Space(), until, received);
  if (outcome != Outcome::kOk) return outcome;
  parser_.Filled(received);
  isClosed_ = received == 0;
  const bool isTaken = !isClosed_ && RequestScope::Current().Spend(received, address_.host);
  return isTaken ? Outcome::kOk : Outcome::kNotUnderstood;
}

/// Takes up the challenge of the 401 that is the parser's message.
Outcome RtspClient::TakeChallenge(bool loginWasSent) {
  const std::vector<LoginChallenge> challenges = ParseChallenges(parser_.Message().Headers("WWW-Authenticate"));
  RememberChallenges(address_, challenges);
  const LoginChallenge* strongest = StrongestChallenge(challenges);
  if (strongest == nullptr) return loginWasSent ? Outcome::kLoginRefused : Outcome::kLoginUnsupported;
  // A login that was right before is right still: the camera has only changed its nonce.
  const bool mayTryAgain = strongest->isStale || loginIsProven_;
  if ((loginWasSent && !mayTryAgain) || !MayLogIn(address_, strongest->method)) return Outcome::kLoginRefused;
  challenge_ = *strongest;
  nonceUses_ = 0;
  return Outcome::kOk;
}

void RtspClient::AnswerRequest(const RtspMessage& request) {
  if (HoldsControls(request.Header("CSeq"))) return;  // it would become lines of its own
  const bool isKnown = request.method != "REDIRECT";
  const std::string answer = std::string("RTSP/1.0 ") + (isKnown ? "200 OK" : "501 Not Implemented") +
                             "\r\nCSeq: " + std::string(request.Header("CSeq")) + "\r\n\r\n";
  std::ignore =
      socket_.Write(std::span(reinterpret_cast<const std::uint8_t*>(answer.data()), answer.size()), deadline_);
}

Outcome RtspClient::KeepEarly(const InterleavedPacket& packet) {
  earlySize_ += packet.bytes.size();
  if (earlySize_ > kMaxEarlySize) return Outcome::kNotUnderstood;
  early_.push_back({packet.isControl, {packet.bytes.begin(), packet.bytes.end()}});
  return Outcome::kOk;
}

/// Reads the channels that the camera chose; false when it wants to send in another way.
bool RtspClient::GrantsInterleaved(std::string_view transport) {
  unsigned int rtp = 0;
  unsigned int rtcp = 1;
  bool isNamed = false;
  std::string_view rest = transport;
  while (!rest.empty()) {
    constexpr std::string_view kChannels = "interleaved=";
    std::string_view part = Trimmed(TakeUntil(rest, ';'));
    if (!StartsWithIgnoreCase(part, kChannels)) continue;
    isNamed = true;
    part.remove_prefix(kChannels.size());
    const char* const partEnd = part.data() + part.size();
    const auto first = std::from_chars(part.data(), partEnd, rtp);
    rtcp = rtp + 1;
    if (first.ptr != partEnd && *first.ptr == '-') std::from_chars(first.ptr + 1, partEnd, rtcp);
  }
  constexpr unsigned int kMaxChannel = 255;
  if (rtp > kMaxChannel || rtcp > kMaxChannel) return false;
  rtcpChannel_ = static_cast<std::uint8_t>(rtcp);
  parser_.ExpectPackets(static_cast<std::uint8_t>(rtp), rtcpChannel_);
  return isNamed || transport.empty() || transport.find("TCP") != std::string_view::npos;
}

void RtspClient::ReadSession(std::string_view session) {
  session_ = Trimmed(TakeUntil(session, ';'));
  constexpr std::string_view kTimeout = "timeout=";
  while (!session.empty()) {
    std::string_view part = Trimmed(TakeUntil(session, ';'));
    if (!StartsWithIgnoreCase(part, kTimeout)) continue;
    part.remove_prefix(kTimeout.size());
    std::uint16_t seconds = 0;
    std::from_chars(part.data(), part.data() + part.size(), seconds);
    if (seconds > 0) sessionTimeout_ = std::chrono::seconds(seconds);
  }
}

void RtspClient::KeepAlive() {
  std::ignore = SendRequest("OPTIONS", base_, "", deadline_);
  keepAliveAt_ = Clock::now() + sessionTimeout_ / 2;
}

Outcome RtspClient::NextPacket(InterleavedPacket& packet) {
  for (;;) {
    const RtspParser::Item item = parser_.Next();
    if (item == RtspParser::Item::kPacket) {
      packet = parser_.Packet();
      return Outcome::kOk;
    }
    if (item == RtspParser::Item::kMessage) {  // an answer is that to OPTIONS, which asks nothing
      if (parser_.Message().status == 0) AnswerRequest(parser_.Message());
      continue;
    }
    if (Clock::now() >= keepAliveAt_) KeepAlive();
    const Outcome outcome = Fill(std::min(deadline_, keepAliveAt_));
    const bool isKeepAliveDue = outcome == Outcome::kTimedOut && keepAliveAt_ < deadline_;
    if (outcome != Outcome::kOk && !isKeepAliveDue) return outcome;
  }
}

}  // namespace recorder
