#pragma once

#include <json/value.h>

#include <optional>
#include <string>

#include "recorder/access/grant_list.h"
#include "recorder/http/http_request.h"
#include "recorder/login/login_check.h"

namespace recorder {

/// What requests about logins work with: one for the process. Any thread.
struct LoginService {
  explicit LoginService(const Config& configuration)
      : config(configuration),
        grants(configuration.stateFolder),
        check(configuration.stateFolder, configuration.hashCost) {}

  const Config config;
  GrantList grants;
  LoginCheck check;
};

/// Who asks, and how that is known.
struct LoginCaller {
  std::string user;
  Role role = Role::kUser;
  std::optional<Grant> grant;  ///< nothing: he sent name and password

  bool IsAdmin() const { return role == Role::kAdmin; }
  bool HasSession() const { return grant && !grant->IsToken(); }
};

/// One request below /recorder/1/, as its handler gets it.
struct LoginRequest {
  const HttpRequest& http;
  std::string name;  ///< the last part of the address, where that names a user, session or token
  Json::Value params{Json::objectValue};
  std::optional<LoginCaller> caller = {};
};

struct LoginAnswer {
  int status = 200;
  Json::Value json;
  std::string headers = {};  ///< more lines, each with its end
};

/// A handler changes what it must and answers. Throws HttpError and AccessError.
using LoginHandler = LoginAnswer (*)(LoginService& service, const LoginRequest& request);

/// {"success": true, "data": ...}
LoginAnswer Success(const Json::Value& data);

/// A member of the request's body; "" and false when it is missing. Throws HttpError when it has another type.
std::string TextOf(const LoginRequest& request, const char* member);
bool FlagOf(const LoginRequest& request, const char* member);

/// A time as answers have it: null for none.
Json::Value TimeOf(std::int64_t seconds);

}  // namespace recorder
