#include "recorder/login/login_answer.h"

#include <algorithm>
#include <array>

#include "recorder/access/granting.h"
#include "recorder/http/caller.h"
#include "recorder/http/json_answer.h"
#include "recorder/login/handlers.h"
#include "recorder/login/noting.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/log.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

constexpr std::string_view kPrefix = "/recorder/1/";

/// Who may ask.
enum class Need {
  kNothing,  // whoever asks, it does not matter who
  kAsked,    // the handler decides
  kUser,
  kAdmin,
};

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

/// The part of `path` behind the prefix, cut off before a name: "users/". The name is what was cut off.
std::string_view WithoutName(std::string_view path, std::string& name) {
  path.remove_prefix(std::min(path.size(), kPrefix.size()));
  const std::size_t slash = path.find('/');
  if (slash == std::string_view::npos) return path;
  name = path.substr(slash + 1);
  return name.empty() ? std::string_view() : path.substr(0, slash + 1);
}

const Route& FindRoute(const std::string& verb, std::string_view path) {
  std::string allowed;
  for (const Route& route : kRoutes) {
    if (route.path != path) continue;
    if (route.verb == verb) return route;
    allowed += (allowed.empty() ? "" : ", ") + std::string(route.verb);
  }
  if (allowed.empty()) throw HttpError(404, "no such address");
  throw HttpError(405, "only " + allowed, "Allow: " + allowed + "\r\n");
}

Json::Value ReadBody(const HttpRequest& request) {
  if (request.body.empty()) return Json::Value(Json::objectValue);
  if (BodyType(request) != "application/json") throw HttpError(415, "the body must be application/json");
  return ParseJsonObject(request.body);
}

/// The login of a header "Authorization: Basic". Throws HttpError.
LoginCaller CheckedBasic(LoginService& service, const HttpRequest& request) {
  const auto login = ReadBasicLogin(request.authorization, request.address);
  if (!login) throw NotLoggedIn(request);
  return {login->user, service.check.Check(*login), std::nullopt};
}

std::optional<LoginCaller> FindCaller(LoginService& service, const HttpRequest& request) {
  if (StartsWithIgnoreCase(request.authorization, "Basic ")) return CheckedBasic(service, request);
  const std::optional<Grant> grant = FindGrant(request, service.grants);
  if (!grant) return std::nullopt;
  if (IsUseToBeNoted(*grant, SecondsNow())) TryNoteUse(service.config.stateFolder, grant->id);
  return LoginCaller{grant->user, grant->role, grant};
}

void Admit(const LoginRequest& request, Need need) {
  if (need == Need::kNothing || need == Need::kAsked) return;
  if (!request.caller) throw NotLoggedIn(request.http);
  if (need == Need::kAdmin && !request.caller->IsAdmin()) throw HttpError(403, "only an admin may do that");
}

LoginAnswer Handle(LoginService& service, const HttpRequest& http) {
  CheckSameSite(http, service.config.hostNames);
  LoginRequest request{http, {}};
  const Route& route = FindRoute(http.method, WithoutName(http.path, request.name));
  if (route.need != Need::kNothing) request.caller = FindCaller(service, http);
  Admit(request, route.need);
  request.params = ReadBody(http);
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
    return {ToCgi(error.Status() == 401 ? NotLoggedIn(request, error.what()) : error), isLate};
  } catch (const AccessError& error) {
    return {ToCgi(HttpError(StatusOf(error), error.what()))};
  } catch (const std::exception& error) {
    LogFailure(error.what());
    return {ToCgi(HttpError(500, "the recorder failed; its log says why"))};
  }
}

}  // namespace

std::size_t LargestLoginBody(std::string_view /*path*/) { return kLargestBody; }

TimedAnswer AnswerLogin(LoginService& service, const HttpRequest& request) {
  return Answered(request, [&] {
    const LoginAnswer answer = Handle(service, request);
    return JsonAnswer(answer.status, answer.json, answer.headers);
  });
}

TimedAnswer Authorize(LoginService& service, const HttpRequest& request) {
  return Answered(request, [&] {
    const LoginCaller caller = CheckedBasic(service, request);
    if (caller.user.empty() || Trimmed(caller.user) != caller.user)
      throw NotLoggedIn(request);  // of a file made by hand
    return "Status: 200\r\nVariable-REMOTE_USER: " + caller.user + "\r\n\r\n";
  });
}

}  // namespace recorder
