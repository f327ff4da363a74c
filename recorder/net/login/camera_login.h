#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "recorder/net/camera_address.h"
#include "recorder/net/login/login.h"
#include "recorder/utility/outcome.h"

// Logins to cameras, by the rules of the calling thread's RequestScope. All that makes a login goes through here: it is
// the only place where the token of a lent password becomes a password.

namespace recorder {

/// Remembers what `camera` asks for.
void RememberChallenges(const CameraAddress& camera, const std::vector<LoginChallenge>& challenges);

/// Judges the certificate that `camera`'s port shows, the SHA-256 of its DER in hexadecimal, before anything is sent
/// inside TLS. "", no certificate, is kNotThisProtocol, and logged. Where a password is lent, it is compared with what
/// is pinned in the camera's record: kCertificateChanged when it is another one, kRecorderFailed when the records
/// cannot be used, both logged. Any other is taken, and that is logged.
Outcome TrustCertificate(const CameraAddress& camera, const std::string& certificate);

/// False, and logged, when a login by `method` must not go to `camera`'s port: by Basic to a host that asked for Digest
/// in this request, or by one that is too weak for a lent password.
bool MayLogIn(const CameraAddress& camera, LoginMethod method);

/// False, and logged, when no login at all must go to `camera`'s port: without TLS, where a certificate is pinned for
/// it. To be asked before a login that is made elsewhere is sent; MayLogIn implies it.
bool KeepsTls(const CameraAddress& camera);

/// Value of the Authorization header that answers `challenge` for one request. Nothing where there is nothing to log in
/// with, or where a lent password cannot be had, which is logged.
std::optional<std::string> MakeAuthorization(const CameraAddress& camera, const LoginChallenge& challenge,
                                             std::string_view method, std::string_view uri, const ClientNonce& nonce);

/// The password for one login that is made elsewhere, with the same exceptions. The caller wipes it.
std::optional<std::string> PasswordFor(const CameraAddress& camera);

/// Says that `camera` took a login by `method`.
void LoginWorked(const CameraAddress& camera, LoginMethod method);

}  // namespace recorder
