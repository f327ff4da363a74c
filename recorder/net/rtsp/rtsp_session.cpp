#include "recorder/net/rtsp/rtsp_session.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "recorder/net/camera_url.h"
#include "recorder/net/percent.h"
#include "recorder/net/rtsp/rtsp_status.h"
#include "recorder/utility/cause_table.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

constexpr int kMaxRedirects = 3;
constexpr std::size_t kPacketCost = 64;  // of memory, beside its bytes

// How long a camera may take to close the connection behind its challenge, when it closes without saying so.
constexpr std::chrono::milliseconds kShortestPause{20};
constexpr std::chrono::milliseconds kLongestPause{50};

bool IsLast(const RtspMessage& answer) { return EqualsIgnoreCase(answer.Header("Connection"), "close"); }

Outcome OutcomeOf(int status) { return IsSuccess(status) ? Outcome::kOk : OutcomeOfRtsp(status); }

}  // namespace

RtspSession::RtspSession(RtspTarget target, Clock::time_point deadline, RtspLogins& logins)
    : target_(std::move(target)), uri_(target_.Uri()), deadline_(deadline), logins_(logins), login_(logins) {}

void RtspSession::Describe() {
  BeginDescribe();
  Connect();
}

void RtspSession::DescribeOther(std::string_view path) {
  login_.Answered();
  target_.path = path;
  uri_ = target_.Uri();
  base_.clear();
  video_ = {};
  BeginDescribe();
  SendRequest();
}

void RtspSession::Setup() {
  Begin(Goal::kSetup, {"SETUP", ResolveControl(base_, video_.control), transport_.Wish()});
  SendRequest();
}

void RtspSession::Play() {
  Begin(Goal::kPlay, {"PLAY", ResolveControl(base_, video_.sessionControl), "Range: npt=0.000-\r\n"});
  SendRequest();
}

void RtspSession::Read() {
  goal_ = Goal::kRead;
  state_ = State::kListening;
  if (early_.empty()) return;
  current_ = std::move(early_.front().bytes);
  packet_ = {early_.front().isControl, current_};
  early_.pop_front();
  Finish(Outcome::kOk);
}

RtspSession::Step RtspSession::Next(Clock::time_point now) {
  now_ = now;
  const bool isPauseOver = now_ >= Until() || parser_.HasPart();  // what speaks on has not closed
  if (state_ == State::kPausing && now_ >= deadline_) Finish(Outcome::kTimedOut);
  if (state_ == State::kPausing && isPauseOver) SendRequest();
  while (state_ == State::kListening && outgoing_.empty()) {
    const RtspParser::Item item = parser_.Next();
    if (item == RtspParser::Item::kNone) return Await();
    Take(item);
  }
  if (state_ == State::kConnecting) return Step::kConnect;
  if (state_ == State::kPausing) return Step::kReceive;
  if (state_ == State::kOpening) return Step::kOpenPorts;
  if (state_ == State::kSending) sentAt_ = now_;
  return state_ == State::kDone ? Step::kDone : Step::kSend;
}

/// All that came is taken.
RtspSession::Step RtspSession::Await() {
  if (now_ >= keepAliveAt_) KeepAlive();
  if (!outgoing_.empty()) return Step::kSend;
  if (now_ < std::min(Deadline(), packetBy_)) return Step::kReceive;
  Finish(now_ < Deadline() ? Outcome::kTransportRefused : Outcome::kTimedOut);
  return Step::kDone;
}

std::span<const std::uint8_t> RtspSession::Outgoing() const {
  return {reinterpret_cast<const std::uint8_t*>(outgoing_.data()), outgoing_.size()};
}

void RtspSession::Sent(Outcome outcome) {
  outgoing_.clear();
  if (state_ != State::kSending) return;  // of other sends, a broken connection shows in what is read
  state_ = State::kListening;
  if (outcome == Outcome::kTimedOut) return Finish(outcome);
  if (outcome != Outcome::kOk) Ended(Ending::kUsual);
}

Clock::time_point RtspSession::Until() const { return std::min({Deadline(), keepAliveAt_, pauseUntil_, packetBy_}); }

/// Some cameras close the connection behind their challenge, without having read the login that followed it; to close
/// it over a login is others' way to refuse it.
void RtspSession::Ended(Ending ending) {
  const bool isOverLogin = IsLoginOnTrial() && !parser_.HasPart();
  if (isOverLogin || state_ == State::kPausing) logins_.RememberSteady(target_.port, false);
  if (state_ == State::kPausing) return Reconnect();
  const bool isUnread = ending == Ending::kUnread && goal_ != Goal::kPlay && !hasAnsweredCamera_;
  if (isOverLogin && isUnread && login_.MayRepeat()) return Connect();
  session_ = {};  // it ends with its connection
  isOpen_ = false;
  const Outcome outcome = IsAskingForUdp() ? Outcome::kTransportRefused : Outcome::kNotUnderstood;
  Finish(isOverLogin ? Outcome::kLoginRefused : outcome);
}

void RtspSession::PortsOpened(int rtpPort) {
  if (rtpPort == 0) return Finish(Outcome::kTransportRefused);
  transport_.WishForUdp(rtpPort);
  Setup();
}

void RtspSession::Arrived(const InterleavedPacket& packet) {
  if (!packet.isControl) packetBy_ = Clock::time_point::max();
  TakePacket(packet);
}

void RtspSession::Finish(Outcome outcome) {
  result_ = outcome;
  state_ = State::kDone;
}

std::string RtspSession::Teardown() {
  std::string text;
  if (session_.id.empty() || IsLoginOnTrial()) return text;
  const Outcome outcome = Compose({"TEARDOWN", ResolveControl(base_, video_.sessionControl), ""}, text);
  return outcome == Outcome::kOk ? text : "";
}

void RtspSession::Begin(Goal goal, Request request) {
  goal_ = goal;
  request_ = std::move(request);
  login_.BeginRequest();
}

void RtspSession::BeginDescribe() { Begin(Goal::kDescribe, {"DESCRIBE", uri_, "Accept: application/sdp\r\n"}); }

void RtspSession::Connect() {
  parser_ = RtspParser();
  login_.BeginConnection();
  isOpen_ = true;
  state_ = State::kConnecting;
}

/// Some cameras close the connection right behind their challenge, without saying so. A login that meets the end is
/// lost, and looks like one that was refused by closing.
void RtspSession::Pause() {
  if (logins_.IsSteady(target_.port)) return SendRequest();
  state_ = State::kPausing;
  pauseUntil_ = now_ + std::clamp<Clock::duration>(now_ - sentAt_, kShortestPause, kLongestPause);
}

/// The camera has closed the connection behind its challenge.
void RtspSession::Reconnect() {
  login_.DropChallenge();
  Connect();
}

/// Sends the request again, after an answer that was not yet the one to it.
void RtspSession::Repeat(const RtspMessage& refusal) { IsLast(refusal) ? Connect() : SendRequest(); }

void RtspSession::SendRequest() {
  pauseUntil_ = Clock::time_point::max();
  if (const Outcome outcome = Compose(request_, outgoing_); outcome != Outcome::kOk) return Finish(outcome);
  login_.Sent();
  hasAnsweredCamera_ = false;
  state_ = State::kSending;
}

Outcome RtspSession::Compose(const Request& request, std::string& text) {
  const std::string uri = PercentEncoded(request.uri, kAddressSigns);  // cameras name addresses with blanks
  const std::optional<std::string> login = login_.Authorization(request.method, uri);
  if (!login) return Outcome::kLoginRefused;
  // All three hold what the camera said (Content-Base, Session, nonce), which must not become lines of their own.
  if (HoldsControls(request.uri) || HoldsControls(session_.id) || HoldsControls(*login)) return Outcome::kNotUnderstood;
  text = std::string(request.method) + ' ' + uri + " RTSP/1.0\r\nCSeq: " + std::to_string(++lastSequence_) +
         "\r\nUser-Agent: " + target_.userAgent + "\r\n" + request.headers;
  if (!session_.id.empty()) text += "Session: " + session_.id + "\r\n";
  if (!login->empty()) text += "Authorization: " + *login + "\r\n";
  text += "\r\n";
  return Outcome::kOk;
}

void RtspSession::KeepAlive() {
  std::ignore = Compose({"OPTIONS", base_, ""}, outgoing_);
  keepAliveAt_ = now_ + session_.timeout / 2;
}

void RtspSession::Take(RtspParser::Item item) {
  switch (item) {
    case RtspParser::Item::kNone:
      return;
    case RtspParser::Item::kPacket:
      return TakePacket(parser_.Packet());
    case RtspParser::Item::kMessage:
      return TakeMessage(parser_.Message());
    case RtspParser::Item::kForeign:
      return Finish(Outcome::kNotThisProtocol);
    case RtspParser::Item::kMalformed:
      return Finish(Outcome::kNotUnderstood);
  }
}

void RtspSession::TakePacket(const InterleavedPacket& packet) {
  if (goal_ == Goal::kRead) {
    packet_ = packet;
    return Finish(Outcome::kOk);
  }
  earlySize_ += packet.bytes.size() + kPacketCost;
  if (earlySize_ > kMostEarlyBytes) return Finish(Outcome::kNotUnderstood);
  early_.push_back({packet.isControl, {packet.bytes.begin(), packet.bytes.end()}});
}

/// Answers are taken in order, since some carry no CSeq. After PLAY there is only that to OPTIONS, which asks nothing.
void RtspSession::TakeMessage(const RtspMessage& message) {
  if (message.status == 0) return AnswerRequest(message);
  hasSpoken_ = true;
  const bool isFinal = message.status >= 200;
  if (isFinal) TakeName(message);
  if (isFinal && goal_ != Goal::kRead) TakeAnswer(message);
}

void RtspSession::TakeName(const RtspMessage& answer) {
  if (server_.software.empty()) server_.software = answer.Header("Server");
  if (!IsChallenge(answer.status) || !server_.realm.empty()) return;
  const std::vector<LoginChallenge> challenges = ParseChallenges(answer.Headers("WWW-Authenticate"));
  if (!challenges.empty()) server_.realm = challenges.front().realm;
}

void RtspSession::AnswerRequest(const RtspMessage& request) {
  if (HoldsControls(request.Header("CSeq"))) return;  // it would become lines of its own
  const bool isKnown = request.method != "REDIRECT";
  hasAnsweredCamera_ = true;
  outgoing_ = std::string("RTSP/1.0 ") + (isKnown ? "200 OK" : "501 Not Implemented") +
              "\r\nCSeq: " + std::string(request.Header("CSeq")) + "\r\n\r\n";
}

void RtspSession::TakeAnswer(const RtspMessage& answer) {
  if (IsChallenge(answer.status)) return LogIn(answer);
  if (IsSuccess(answer.status) && login_.IsUnproven() && IsTelling()) login_.Prove(target_.port);
  const bool leadsOn = goal_ == Goal::kDescribe && IsRtspRedirect(answer.status) && redirects_ < kMaxRedirects;
  if (leadsOn) return FollowRedirect(answer);
  if (goal_ == Goal::kDescribe && WantsOptions(answer.status) && !hasAskedOptions_) return AskOptions(answer);
  if (goal_ == Goal::kOptions) return LeaveOptions(answer);
  if (goal_ == Goal::kPlay) keepAliveAt_ = now_ + session_.timeout / 2;
  const bool isVideoDue = std::ranges::all_of(early_, &EarlyPacket::isControl);
  if (goal_ == Goal::kPlay && transport_.IsUdp() && isVideoDue) packetBy_ = now_ + (deadline_ - now_) / 2;
  Finish(MeaningOf(answer));
  const bool mayBeOverUdp = goal_ == Goal::kSetup && !transport_.IsUdp() && !target_.isTls;  // TLS would be left
  if (mayBeOverUdp && result_ == Outcome::kTransportRefused) state_ = State::kOpening;
}

/// What the answer means that the goal was after; takes over what it holds.
Outcome RtspSession::MeaningOf(const RtspMessage& answer) {
  if (goal_ == Goal::kSetup && RefusesTransport(answer.status)) return Outcome::kTransportRefused;
  const Outcome outcome = OutcomeOf(answer.status);
  if (outcome == Outcome::kNotUnderstood && IsAskingForUdp()) return Outcome::kTransportRefused;
  if (outcome == Outcome::kOk && goal_ == Goal::kDescribe) return ReadDescription(answer);
  if (outcome == Outcome::kOk && goal_ == Goal::kSetup) return ReadGrant(answer);
  return outcome;
}

void RtspSession::AskOptions(const RtspMessage& refusal) {
  hasAskedOptions_ = true;
  Begin(Goal::kOptions, {"OPTIONS", uri_, ""});
  Repeat(refusal);
}

void RtspSession::LeaveOptions(const RtspMessage& answer) {
  const Outcome outcome = OutcomeOf(answer.status);
  if (login_.IsWanted() && outcome == Outcome::kLoginRefused) return Finish(outcome);
  BeginDescribe();
  Repeat(answer);
}

/// Turns to where the camera points. Another host would be another camera, which must not be given this one's login; a
/// login of its own is what another port may ask for. TLS is not left.
void RtspSession::FollowRedirect(const RtspMessage& answer) {
  const auto here = ParseCameraUrl(uri_);
  const auto there = ParseCameraUrl(WholeAddress(uri_, answer.Header("Location")));
  if (!here || !there || there->host != here->host) return Finish(Outcome::kNotUnderstood);
  const bool isTls = there->scheme == "rtsps";
  if (!isTls && (there->scheme != "rtsp" || target_.isTls)) return Finish(Outcome::kNotUnderstood);
  ++redirects_;
  target_.isTls = isTls;
  target_.port = there->port;
  target_.path = there->path;
  uri_ = target_.Uri();
  login_.BeginServer();
  hasAskedOptions_ = false;
  logins_.AllowPort(target_.port);
  Describe();
}

Outcome RtspSession::ReadDescription(const RtspMessage& answer) {
  if (!IsDescription(answer.body)) return Outcome::kNotUnderstood;
  auto video = FindVideo(answer.body);
  if (!video) return Outcome::kNoVideo;
  if (video->isEncrypted) return Outcome::kEncryptedStream;
  video_ = std::move(*video);
  audio_ = FindAudio(answer.body);
  if (base_.empty()) base_ = answer.Header("Content-Base");
  if (base_.empty()) base_ = answer.Header("Content-Location");
  if (base_.empty()) base_ = uri_;
  return Outcome::kOk;
}

Outcome RtspSession::ReadGrant(const RtspMessage& answer) {
  session_ = ParseSession(answer.Header("Session"));
  if (!transport_.Take(answer.Header("Transport"))) return Outcome::kTransportRefused;
  if (!transport_.IsUdp()) parser_.ExpectPackets(transport_.Channels().rtp, transport_.Channels().rtcp);
  return Outcome::kOk;
}

/// Sends the request again with a login that meets the challenge, if one may.
void RtspSession::LogIn(const RtspMessage& refusal) {
  const Outcome outcome = login_.Take(refusal);
  if (outcome != Outcome::kOk) return Finish(outcome);
  if (goal_ == Goal::kPlay) return SendRequest();  // the session would end with the connection
  IsLast(refusal) ? Connect() : Pause();
}

}  // namespace recorder
