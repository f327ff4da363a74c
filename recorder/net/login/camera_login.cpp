#include "recorder/net/login/camera_login.h"

#include <algorithm>

#include "recorder/request/request_scope.h"
#include "recorder/utility/log.h"
#include "recorder/utility/secrets.h"

namespace recorder {

void RememberChallenges(const CameraAddress& camera, const std::vector<LoginChallenge>& challenges) {
  const auto isDigest = [](const LoginChallenge& challenge) { return challenge.isDigest; };
  const bool isAsked = std::any_of(challenges.begin(), challenges.end(), isDigest);
  if (isAsked) RequestScope::Current().RememberDigest(camera.host);
}

Outcome TrustCertificate(const CameraAddress& camera, const std::string& certificate) {
  if (certificate.empty()) {
    LogFailure(PlaceOf(camera) + " speaks TLS without a certificate: nothing was sent.");
    return Outcome::kNotThisProtocol;
  }
  LentPassword* lent = RequestScope::Current().FindLent(camera.password);
  if (lent != nullptr) return lent->TrustCertificate(camera.port, certificate);
  LogFailure("The certificate of " + PlaceOf(camera) + " is not checked: only that of a stored camera is.");
  return Outcome::kOk;
}

bool MayLogIn(const CameraAddress& camera, LoginMethod method) {
  RequestScope& scope = RequestScope::Current();
  if (method == LoginMethod::kBasic && scope.KnowsDigest(camera.host)) {
    LogFailure(PlaceOf(camera) + " asks for a login by Basic, after one by Digest: no password was sent.");
    return false;
  }
  LentPassword* lent = scope.FindLent(camera.password);
  return lent == nullptr || lent->MayLogIn(camera.port, camera.isTls, method);
}

bool KeepsTls(const CameraAddress& camera) {
  LentPassword* lent = RequestScope::Current().FindLent(camera.password);
  return lent == nullptr || lent->KeepsTls(camera.port, camera.isTls);
}

std::optional<std::string> MakeAuthorization(const CameraAddress& camera, const LoginChallenge& challenge,
                                             std::string_view method, std::string_view uri, const ClientNonce& nonce) {
  std::optional<std::string> password = PasswordFor(camera);
  if (!password) return std::nullopt;
  const WipeAtEnd wipe(*password);
  return AuthorizationValue(challenge, camera.user, *password, method, uri, nonce);
}

std::optional<std::string> PasswordFor(const CameraAddress& camera) {
  const LentPassword* lent = RequestScope::Current().FindLent(camera.password);
  std::optional<std::string> password = lent == nullptr ? camera.password : lent->Reveal();
  if (camera.user.empty() && password == "") return std::nullopt;
  if (password) RequestScope::Current().SendLogin();
  return password;
}

void LoginWorked(const CameraAddress& camera, LoginMethod method) {
  RequestScope::Current().TakeLogin();
  if (LentPassword* lent = RequestScope::Current().FindLent(camera.password)) lent->Worked(camera.port, method);
}

}  // namespace recorder
