#pragma once

#include "recorder/access/grant_list.h"
#include "recorder/http/own_request.h"
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

/// A handler changes what it must and answers. Throws HttpError and AccessError.
using LoginHandler = OwnAnswer (*)(LoginService& service, const OwnRequest& request);

}  // namespace recorder
