#include <algorithm>

#include "recorder/access/granting.h"
#include "recorder/http/caller.h"
#include "recorder/login/handlers.h"
#include "recorder/utility/clock.h"

namespace recorder {

namespace {

std::optional<Role> RoleIn(const OwnRequest& request) {
  const std::string name = TextOf(request, "role");
  const std::optional<Role> role = ParseRole(name);
  if (!role && !name.empty()) throw HttpError(400, "role must be \"admin\" or \"user\"");
  return role;
}

/// True for whoever has a link to make the first user, on a recorder that has none.
bool MayMakeFirstUser(LoginService& service, const OwnRequest& request) {
  const std::optional<Grant> link = service.grants.Find(Grant::Kind::kLink, TextOf(request, "link"));
  return link && link->user.empty() && ReadUsers(service.config.stateFolder).empty();
}

void CheckOldPassword(LoginService& service, const OwnRequest& request) try {
  service.check.Check({request.caller->user, TextOf(request, "oldPassword"), request.http.address});
} catch (const HttpError& error) {
  if (error.Status() == 401) throw HttpError(403, "the old password is wrong");  // he is logged in all the same
  throw;
}

/// Who has a password has all that a token must not make.
void RefuseToken(const OwnRequest& request) {
  if (request.caller->HasToken()) throw HttpError(403, "a token makes no login: that would outlive the token's end");
}

void CheckMayChange(LoginService& service, const OwnRequest& request, const UserChange& change) {
  const bool isOwn = request.caller->user == request.name;
  if (!request.caller->IsAdmin() && (!isOwn || change.role)) throw HttpError(403, "only an admin may do that");
  RefuseToken(request);
  if (isOwn && change.password) CheckOldPassword(service, request);
}

PasswordHasher HasherOf(LoginService& service) {
  return [&](const std::string& password) { return service.check.Hash(password); };
}

}  // namespace

OwnAnswer ListUsers(LoginService& service, const OwnRequest& /*request*/) {
  Json::Value list(Json::arrayValue);
  for (const User& user : ReadUsers(service.config.stateFolder)) {
    Json::Value entry(Json::objectValue);
    entry["name"] = user.name;
    entry["role"] = std::string(NameOf(user.role));
    list.append(entry);
  }
  return Success(list);
}

OwnAnswer PostUser(LoginService& service, const OwnRequest& request) {
  const bool isFirst = MayMakeFirstUser(service, request);
  if (!isFirst && !request.caller) throw NotLoggedIn(request.http);
  if (!isFirst && !request.caller->IsAdmin()) throw HttpError(403, "only an admin may do that");
  if (!isFirst) RefuseToken(request);
  const std::filesystem::path& folder = service.config.stateFolder;
  const std::string name = TextOf(request, "name");
  const std::string password = TextOf(request, "password");
  if (isFirst) {
    AddFirstUser(folder, TextOf(request, "link"), name, password, HasherOf(service));
  } else {
    AddUser(folder, name, password, RoleIn(request).value_or(Role::kUser), HasherOf(service));
  }
  return Success({});
}

OwnAnswer PatchUser(LoginService& service, const OwnRequest& request) {
  UserChange change;
  if (request.params.isMember("password")) change.password = TextOf(request, "password");
  change.role = RoleIn(request);
  if (!change.password && !change.role) throw HttpError(400, "name what to change: password, role or both");
  CheckMayChange(service, request, change);
  ChangeUser(service.config.stateFolder, request.name, change, HasherOf(service));
  OwnAnswer answer = Success({});
  if (request.caller->user != request.name || !request.caller->HasSession()) return answer;
  const bool isToStay = request.caller->grant->until - SecondsNow() > kIdleSession;
  const NewGrant made = StartSession(service.config.stateFolder, request.name, request.http.address, isToStay);
  answer.headers = SetCookie(request.http, made.secret, isToStay);
  return answer;
}

OwnAnswer DeleteUser(LoginService& service, const OwnRequest& request) {
  RemoveUser(service.config.stateFolder, request.name);
  return Success({});
}

}  // namespace recorder
