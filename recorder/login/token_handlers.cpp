#include "recorder/access/granting.h"
#include "recorder/login/handlers.h"
#include "recorder/utility/clock.h"

namespace recorder {

namespace {

bool IsTokenFor(const Grant& grant, const Caller& caller) {
  return grant.IsToken() && (caller.IsAdmin() || grant.user == caller.user);
}

std::int64_t EndIn(const OwnRequest& request) {
  const Json::Value& value = request.params["until"];
  if (!value.isNull() && !value.isInt64()) throw HttpError(400, "until must be a number of seconds since 1970");
  return value.asInt64();
}

}  // namespace

OwnAnswer ListTokens(LoginService& service, const OwnRequest& request) {
  Json::Value list(Json::arrayValue);
  for (const Grant& grant : ReadGrants(service.config.stateFolder)) {
    if (!IsTokenFor(grant, *request.caller) || !grant.IsValid(SecondsNow())) continue;
    Json::Value token(Json::objectValue);
    token["name"] = grant.label;
    token["user"] = grant.user;
    token["created"] = TimeOf(grant.created);
    token["lastUsed"] = TimeOf(grant.lastUsed);
    token["until"] = TimeOf(grant.until);
    list.append(token);
  }
  return Success(list);
}

OwnAnswer PostToken(LoginService& service, const OwnRequest& request) {
  if (request.caller->HasToken()) throw HttpError(403, "a token makes no other: it would outlive its own end");
  const NewGrant made =
      AddToken(service.config.stateFolder, request.caller->user, TextOf(request, "name"), EndIn(request));
  Json::Value data(Json::objectValue);
  data["token"] = made.secret;
  return Success(data);
}

OwnAnswer DeleteToken(LoginService& service, const OwnRequest& request) {
  const auto isMeant = [&](const Grant& grant) {
    return grant.label == request.name && IsTokenFor(grant, *request.caller);
  };
  if (EndGrants(service.config.stateFolder, isMeant) == 0) throw HttpError(404, "there is no such token");
  return Success({});
}

}  // namespace recorder
