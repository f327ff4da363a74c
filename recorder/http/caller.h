#pragma once

#include <optional>
#include <string>

#include "recorder/access/grant_list.h"
#include "recorder/http/http_request.h"
#include "recorder/utility/limits.h"

namespace recorder {

/// Who asks, and how that is known.
struct Caller {
  std::string user;
  Role role = Role::kUser;
  std::optional<Grant> grant = {};  ///< nothing: he sent name and password

  bool IsAdmin() const { return role == Role::kAdmin; }
  bool HasSession() const { return grant && !grant->IsToken(); }
  bool HasToken() const { return grant && grant->IsToken(); }
};

/// Of the cookie that holds a session's secret. Over TLS a browser takes it from this very host alone (RFC 6265bis,
/// section 4.1.3.2).
inline const char* SessionCookie(bool isTls) { return isTls ? "__Host-session" : "session"; }

/// The token (RFC 6750) or the session of a request; nothing when it has none that is valid. Throws std::system_error.
std::optional<Grant> FindGrant(const HttpRequest& request, GrantList& grants);

/// Whether a request tries to prove by itself who asks: by a password, a token or a session, be they right or not.
bool CarriesLogin(const HttpRequest& request);

/// The ways to log in, for the header WWW-Authenticate (RFC 9110 section 11.6.1): all, and those that a page in a
/// browser is told of, which would answer the offer of Basic with a box of its own.
inline constexpr char kAllWays[] = R"(Basic realm="recorder", charset="UTF-8", Bearer realm="recorder")";
inline constexpr char kWaysOfPages[] = R"(Bearer realm="recorder")";

/// The refusal of a request without a valid login, with the ways to log in.
HttpError NotLoggedIn(const HttpRequest& request, const std::string& reason = kNotLoggedIn);

}  // namespace recorder
