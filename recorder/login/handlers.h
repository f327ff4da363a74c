#pragma once

#include "recorder/login/login_service.h"

namespace recorder {

// What each address about logins does; docs/api.md tells it to clients, and docs/security.md who may.

LoginAnswer GetSession(LoginService& service, const LoginRequest& request);
LoginAnswer PostSession(LoginService& service, const LoginRequest& request);
LoginAnswer DeleteOwnSession(LoginService& service, const LoginRequest& request);
LoginAnswer ListSessions(LoginService& service, const LoginRequest& request);
LoginAnswer DeleteSession(LoginService& service, const LoginRequest& request);

LoginAnswer ListUsers(LoginService& service, const LoginRequest& request);
LoginAnswer PostUser(LoginService& service, const LoginRequest& request);
LoginAnswer PatchUser(LoginService& service, const LoginRequest& request);
LoginAnswer DeleteUser(LoginService& service, const LoginRequest& request);

LoginAnswer ListTokens(LoginService& service, const LoginRequest& request);
LoginAnswer PostToken(LoginService& service, const LoginRequest& request);
LoginAnswer DeleteToken(LoginService& service, const LoginRequest& request);

/// The header line that gives a browser the cookie of a session, for 30 days if that is to stay.
std::string SetCookie(const HttpRequest& request, const std::string& secret, bool isToStay);

}  // namespace recorder
