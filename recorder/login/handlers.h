#pragma once

#include "recorder/login/login_service.h"

namespace recorder {

// What each address about logins does; docs/api.md tells it to clients, and docs/security.md who may.

OwnAnswer GetSession(LoginService& service, const OwnRequest& request);
OwnAnswer PostSession(LoginService& service, const OwnRequest& request);
OwnAnswer DeleteOwnSession(LoginService& service, const OwnRequest& request);
OwnAnswer ListSessions(LoginService& service, const OwnRequest& request);
OwnAnswer DeleteSession(LoginService& service, const OwnRequest& request);

OwnAnswer ListUsers(LoginService& service, const OwnRequest& request);
OwnAnswer PostUser(LoginService& service, const OwnRequest& request);
OwnAnswer PatchUser(LoginService& service, const OwnRequest& request);
OwnAnswer DeleteUser(LoginService& service, const OwnRequest& request);

OwnAnswer ListTokens(LoginService& service, const OwnRequest& request);
OwnAnswer PostToken(LoginService& service, const OwnRequest& request);
OwnAnswer DeleteToken(LoginService& service, const OwnRequest& request);

/// The header line that gives a browser the cookie of a session, for 30 days if that is to stay.
std::string SetCookie(const HttpRequest& request, const std::string& secret, bool isToStay);

}  // namespace recorder
