#include "recorder/net/http/http_conversation.h"

#include <algorithm>
#include <utility>

#include "recorder/net/http/http_status.h"
#include "recorder/net/login/camera_login.h"
#include "recorder/utility/cause_table.h"

namespace recorder {

HttpConversation::HttpConversation(HttpPlace place, CameraAddress camera, AnswerReader& reader, std::size_t maxBody)
    : place_(std::move(place)),
      camera_{std::move(camera.host), place_.port, std::move(camera.user), std::move(camera.password), place_.isTls},
      transfer_(place_, reader, maxBody, [this](const std::string& seen) { return TrustCertificate(camera_, seen); }) {}

Outcome HttpConversation::Send(const OutgoingRequest& request, Clock::time_point end) {
  RequestScope& scope = RequestScope::Current();
  if (const auto refusal = scope.Refusal(place_.host, place_.port, camera_.user, camera_.password)) return *refusal;
  const Outcome outcome = Exchange(request, std::min(end, scope.Deadline()));
  if (!IsLoggedIn()) challenge_.reset();
  if (outcome != Outcome::kTimedOut || end >= scope.Deadline()) scope.Remember(place_.host, camera_.user, outcome);
  return outcome;
}

Outcome HttpConversation::Exchange(const OutgoingRequest& request, Clock::time_point deadline) {
  Outcome outcome = Transfer(request, deadline);
  int logins = challenge_ ? 1 : 0;
  for (; outcome == Outcome::kOk && transfer_.Status() == kHttpUnauthorized; ++logins) {
    const std::vector<LoginChallenge> challenges = transfer_.Challenges();
    RememberChallenges(camera_, challenges);
    const LoginChallenge* challenge = StrongestChallenge(challenges);
    if (challenge == nullptr || !IsLoginDue(request, *challenge, logins)) {
      return MeaningOfUnauthorized(request, !challenges.empty());
    }
    if (!MayLogIn(camera_, challenge->method)) return Outcome::kLoginRefused;
    challenge_ = *challenge;
    nonce_ = {MakeClientNonce(), 0};
    outcome = Transfer(request, deadline);
  }
  return outcome;
}

/// `logins`: how often the request was sent with a login.
bool HttpConversation::IsLoginDue(const OutgoingRequest& request, const LoginChallenge& challenge, int logins) const {
  constexpr int kMaxLogins = 2;
  if (logins == 0) return login_ == Login::kNone && HasLogin(camera_) && !request.hasLogin;
  return logins < kMaxLogins && challenge.isStale;
}

/// What a 401 means that is not answered with a login.
Outcome HttpConversation::MeaningOfUnauthorized(const OutgoingRequest& request, bool isChallenged) const {
  if (IsLoggedIn() || request.hasLogin) return Outcome::kOk;
  if (login_ == Login::kSent || !HasLogin(camera_)) return Outcome::kLoginRefused;
  return request.isPost && !isChallenged ? Outcome::kOk : Outcome::kLoginUnsupported;
}

/// Until a login was accepted, each request has a new connection: a login on one that was used before would be sent
/// again when the camera answers it by closing, and so would one that the caller put into the body. The connection of
/// the login that is accepted goes on being used.
Outcome HttpConversation::Transfer(const OutgoingRequest& request, Clock::time_point deadline) {
  using enum HttpTransfer::Connection;
  const bool isLogin = challenge_ || request.hasLogin;
  const auto newOne = isLogin ? kFresh : kClose;
  const auto connection = IsLoggedIn() || !HasLogin(camera_) ? kKeep : newOne;
  const std::optional<std::string> authorization = Authorization(request);
  if (!authorization || (request.hasLogin && !KeepsTls(camera_))) return Outcome::kLoginRefused;
  const Outcome outcome = transfer_.Perform(request, *authorization, connection, deadline);
  if (IsLoggedIn() || !challenge_) return outcome;
  login_ = Login::kSent;
  if (transfer_.IsUnanswered()) return Outcome::kLoginRefused;  // some refuse by closing
  const bool isStalePerhaps = transfer_.Status() == kHttpUnauthorized;
  if (outcome != Outcome::kOk || isStalePerhaps) return outcome;
  if (OutcomeOfHttp(transfer_.Status()) == Outcome::kLoginRefused) return Outcome::kLoginRefused;
  login_ = Login::kAccepted;
  RequestScope::Current().Rungs().Enter(Rung::kDescribe);
  if (OutcomeOfHttp(transfer_.Status()) == Outcome::kOk) LoginWorked(camera_, challenge_->method);
  return outcome;
}

/// "" for none; nothing where there should be one and cannot.
std::optional<std::string> HttpConversation::Authorization(const OutgoingRequest& request) {
  if (!challenge_) return "";
  if (++nonce_.count == 1) RequestScope::Current().Rungs().Enter(Rung::kLogin);
  return MakeAuthorization(camera_, *challenge_, request.isPost ? "POST" : "GET", request.path, nonce_);
}

Outcome FollowRedirects(HttpPlace place, const std::function<Contact(const HttpPlace& place)>& contact) {
  constexpr int kMostRedirects = 3;
  for (int redirects = 0; redirects <= kMostRedirects; ++redirects) {
    const auto [outcome, location] = contact(place);
    if (location.empty()) return outcome;
    const auto target = RedirectTarget(place, location);
    if (!target) return Outcome::kNotUnderstood;
    RequestScope::Current().AllowPort(target->host, target->port);
    place = *target;
  }
  return Outcome::kNotUnderstood;
}

}  // namespace recorder
