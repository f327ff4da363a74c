#include <string_view>

#include "recorder/access/granting.h"
#include "recorder/http/caller.h"
#include "recorder/http/json_answer.h"
#include "recorder/login/handlers.h"
#include "recorder/utility/clock.h"

namespace recorder {

namespace {

Json::Value Describe(const Caller& caller) {
  Json::Value data(Json::objectValue);
  data["user"] = caller.user;
  data["role"] = std::string(NameOf(caller.role));
  data["by"] = caller.HasSession() ? "session" : caller.grant ? "token" : "basic";
  data["until"] = caller.grant ? TimeOf(caller.grant->until) : Json::Value();
  return data;
}

std::string CookieLine(const HttpRequest& request, const std::string& rest) {
  return std::string("Set-Cookie: ") + SessionCookie(request.isTls) + '=' + rest +
         "; Path=/; HttpOnly; SameSite=Strict" + (request.isTls ? "; Secure" : "") + "\r\n";
}

/// A session for somebody who has proved who he is.
OwnAnswer SignIn(LoginService& service, const OwnRequest& request, const std::string& user, bool isToStay) {
  const NewGrant made = StartSession(service.config.stateFolder, user, request.http.address, isToStay);
  OwnAnswer answer = Success(Describe({user, made.grant.role, made.grant}));
  answer.headers = SetCookie(request.http, made.secret, isToStay);
  return answer;
}

OwnAnswer NeedsFirstUser(int status, const std::string& reason) {
  Json::Value json = Failure(status, reason);
  json["error"]["firstUser"] = true;
  return {status, json};
}

OwnAnswer SignInByLink(LoginService& service, const OwnRequest& request, const std::string& secret) {
  const std::optional<Grant> link = service.grants.Find(Grant::Kind::kLink, secret);
  if (!link) throw HttpError(401, "this link was used already, or is too old");
  const std::filesystem::path& folder = service.config.stateFolder;
  if (link->user.empty() && ReadUsers(folder).empty()) {
    return NeedsFirstUser(409, "this recorder has no user yet: make the first one");
  }
  if (link->user.empty()) throw HttpError(401, "this link was for the first user, and there is one already");
  const bool isToStay = FlagOf(request, "stay");  // before the link is used up
  return SignIn(service, request, UseLink(folder, secret), isToStay);
}

bool IsSessionFor(const Grant& grant, const Caller& caller) {
  return grant.kind == Grant::Kind::kSession && (caller.IsAdmin() || grant.user == caller.user);
}

}  // namespace

std::string SetCookie(const HttpRequest& request, const std::string& secret, bool isToStay) {
  return CookieLine(request, secret + (isToStay ? "; Max-Age=" + std::to_string(kLongestSession) : ""));
}

OwnAnswer GetSession(LoginService& service, const OwnRequest& request) {
  if (request.caller) return Success(Describe(*request.caller));
  const HttpError refusal = NotLoggedIn(request.http);
  if (!ReadUsers(service.config.stateFolder).empty()) throw refusal;
  OwnAnswer answer =
      NeedsFirstUser(401, "this recorder has no user yet: recorderctl link prints an address for the first");
  answer.headers = refusal.Headers();
  return answer;
}

OwnAnswer PostSession(LoginService& service, const OwnRequest& request) {
  const std::string link = TextOf(request, "link");
  if (!link.empty()) return SignInByLink(service, request, link);
  const PasswordLogin login{TextOf(request, "user"), TextOf(request, "password"), request.http.address};
  service.check.Check(login);
  return SignIn(service, request, login.user, FlagOf(request, "stay"));
}

OwnAnswer DeleteOwnSession(LoginService& service, const OwnRequest& request) {
  if (request.caller && request.caller->HasSession()) {
    EndGrants(service.config.stateFolder, [&](const Grant& grant) { return grant.id == request.caller->grant->id; });
  }
  OwnAnswer answer = Success({});
  answer.headers = CookieLine(request.http, "; Max-Age=0");
  return answer;
}

OwnAnswer ListSessions(LoginService& service, const OwnRequest& request) {
  Json::Value list(Json::arrayValue);
  for (const Grant& grant : ReadGrants(service.config.stateFolder)) {
    if (!IsSessionFor(grant, *request.caller) || !grant.IsValid(SecondsNow())) continue;
    Json::Value session(Json::objectValue);
    session["id"] = grant.id;
    session["user"] = grant.user;
    session["created"] = TimeOf(grant.created);
    session["lastUsed"] = TimeOf(grant.lastUsed);
    session["until"] = TimeOf(grant.until);
    session["address"] = grant.label;
    session["isThis"] = request.caller->grant && request.caller->grant->id == grant.id;
    list.append(session);
  }
  return Success(list);
}

OwnAnswer DeleteSession(LoginService& service, const OwnRequest& request) {
  const auto isMeant = [&](const Grant& grant) {
    return grant.id == request.name && IsSessionFor(grant, *request.caller);
  };
  if (EndGrants(service.config.stateFolder, isMeant) == 0) throw HttpError(404, "there is no such session");
  return Success({});
}

}  // namespace recorder
