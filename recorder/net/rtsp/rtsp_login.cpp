#include "recorder/net/rtsp/rtsp_login.h"

#include <utility>

namespace recorder {
namespace {

constexpr int kMostLogins = 2;  // of one request: the login, and a nonce that has grown stale meanwhile

}  // namespace

void RtspLogin::BeginServer() {
  state_ = State::kNone;
  hasDropped_ = false;
}

Outcome RtspLogin::Take(const RtspMessage& refusal) {
  const std::vector<LoginChallenge> challenges = ParseChallenges(refusal.Headers("WWW-Authenticate"));
  logins_.Remember(challenges);
  if (!logins_.HasLogin() || tries_ >= kMostLogins) return Outcome::kLoginRefused;
  if (const Outcome outcome = Choose(challenges); outcome != Outcome::kOk) return outcome;
  ++tries_;
  wasChallengedHere_ = true;
  return Outcome::kOk;
}

Outcome RtspLogin::Choose(const std::vector<LoginChallenge>& challenges) {
  const bool wasSent = state_ != State::kNone;
  const LoginChallenge* strongest = StrongestChallenge(challenges);
  if (strongest == nullptr) return wasSent ? Outcome::kLoginRefused : Outcome::kLoginUnsupported;
  // A login that was right before is right still, once: the camera has only changed its nonce.
  const bool mayTryAgain = strongest->isStale || (state_ == State::kProven && tries_ == 0);
  if ((wasSent && !mayTryAgain) || !logins_.MayLogIn(strongest->method)) return Outcome::kLoginRefused;
  challenge_ = *strongest;
  nonceUses_ = 0;
  if (state_ != State::kProven) state_ = State::kChallenged;
  return Outcome::kOk;
}

std::optional<std::string> RtspLogin::Authorization(std::string_view method, std::string_view uri) {
  if (state_ == State::kNone) return "";
  return logins_.Authorization(challenge_, method, uri, ++nonceUses_);
}

void RtspLogin::Sent() {
  if (state_ == State::kChallenged) state_ = State::kSent;
}

void RtspLogin::Prove(int port) {
  state_ = State::kProven;
  if (wasChallengedHere_) logins_.RememberSteady(port, true);
  logins_.Worked(challenge_.method);
}

void RtspLogin::Answered() {
  if (IsOnTrial()) state_ = State::kAnswered;
}

bool RtspLogin::MayRepeat() {
  if (state_ != State::kSent) return false;
  state_ = State::kRepeated;
  return true;
}

void RtspLogin::DropChallenge() {
  if (std::exchange(hasDropped_, true)) return;
  state_ = State::kNone;
  tries_ = 0;
}

}  // namespace recorder
