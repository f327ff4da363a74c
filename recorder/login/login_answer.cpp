#include "recorder/login/login_answer.h"

#include "recorder/access/granting.h"
#include "recorder/http/own_route.h"
#include "recorder/http/request_id.h"
#include "recorder/login/grant_use.h"
#include "recorder/login/handlers.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/log.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

struct Route {
  std::string_view verb;
  std::string_view path;  // ends with '/' when a name follows
  Need need;
  LoginHandler handler;
};

constexpr Route kRoutes[] = {
    {"GET", "session", Need::kAsked, &GetSession},
    {"POST", "session", Need::kNothing, &PostSession},
    {"DELETE", "session", Need::kUser, &DeleteOwnSession},
    {"GET", "sessions", Need::kUser, &ListSessions},
    {"DELETE", "sessions/", Need::kUser, &DeleteSession},
    {"GET", "users", Need::kAdmin, &ListUsers},
    {"POST", "users", Need::kAsked, &PostUser},
    {"PATCH", "users/", Need::kUser, &PatchUser},
    {"DELETE", "users/", Need::kAdmin, &DeleteUser},
    {"GET", "tokens", Need::kUser, &ListTokens},
    {"POST", "tokens", Need::kUser, &PostToken},
    {"DELETE", "tokens/", Need::kUser, &DeleteToken},
};

/// The login of a header "Authorization: Basic". Throws HttpError.
Caller CheckedBasic(LoginService& service, const HttpRequest& request) {
  const auto login = ReadBasicLogin(request.authorization, request.address);
  if (!login) throw NotLoggedIn(request);
  return {login->user, service.check.Check(*login), std::nullopt};
}

std::optional<Caller> FindCaller(LoginService& service, const HttpRequest& request) {
  if (StartsWithIgnoreCase(request.authorization, "Basic ")) return CheckedBasic(service, request);
  const std::optional<Grant> grant = FindGrant(request, service.grants);
  if (!grant) return std::nullopt;
  if (IsUseToBeNoted(*grant, SecondsNow())) TryNoteUse(service.config.stateFolder, grant->id);
  return Caller{grant->user, grant->role, grant};
}

OwnAnswer Handle(LoginService& service, const HttpRequest& http, RequestNote& note) {
  CheckSameSite(http, service.config.hostNames);
  OwnRequest request{http, {}};
  const Route& route = FindRoute(kRoutes, http, request.name);
  note.hasLogin = route.handler == &PostSession || CarriesLogin(http);
  if (route.need != Need::kNothing) request.caller = FindCaller(service, http);
  if (request.caller) note.user = request.caller->user;
  Admit(request, route.need);
  request.params = ReadJsonBody(http);
  return route.handler(service, request);
}

int StatusOf(const AccessError& error) {
  switch (error.GetKind()) {
    case AccessError::Kind::kMissing:
      return 404;
    case AccessError::Kind::kConflict:
      return 409;
    case AccessError::Kind::kInvalid:
      break;
  }
  return 400;
}

/// What `work` answers, or why it does not.
template <class Work>
TimedAnswer Answered(const HttpRequest& request, Work work) {
  try {
    return {work()};
  } catch (const HttpError& error) {
    const bool isLate = error.Status() == 429 || error.Status() == 503;
    return {ToCgi(Refusal(error.Status() == 401 ? NotLoggedIn(request, error.what()) : error)), isLate};
  } catch (const AccessError& error) {
    return {ToCgi(Refusal(HttpError(StatusOf(error), error.what())))};
  } catch (const std::exception& error) {
    return {ToCgi(Refusal(error))};
  }
}

}  // namespace

TimedAnswer AnswerLogin(LoginService& service, const HttpRequest& request, RequestNote& note) {
  return Answered(request, [&] { return ToCgi(Handle(service, request, note)); });
}

TimedAnswer Authorize(LoginService& service, const HttpRequest& request, RequestNote& note) {
  return Answered(request, [&] {
    note.hasLogin = CarriesLogin(request);
    const Caller caller = CheckedBasic(service, request);
    if (caller.user.empty() || Trimmed(caller.user) != caller.user)
      throw NotLoggedIn(request);  // of a file made by hand
    note.isQuiet = true;
    return "Status: 200\r\nVariable-REMOTE_USER: " + caller.user +
           "\r\nVariable-REMOTE_ROLE: " + std::string(NameOf(caller.role)) + "\r\nVariable-" + kRequestIdVariable +
           ": " + RequestInLog::Current() + "\r\n\r\n";
  });
}

}  // namespace recorder
