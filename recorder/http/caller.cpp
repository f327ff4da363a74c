#include "recorder/http/caller.h"

#include <string_view>

#include "recorder/utility/text.h"

namespace recorder {

namespace {

constexpr std::string_view kBearer = "Bearer ";

}  // namespace

std::optional<Grant> FindGrant(const HttpRequest& request, GrantList& grants) {
  if (StartsWithIgnoreCase(request.authorization, kBearer)) {
    return grants.Find(Grant::Kind::kToken, Trimmed(std::string_view(request.authorization).substr(kBearer.size())));
  }
  const auto cookies = ParseCookies(request.cookies);
  const auto cookie = cookies.find(SessionCookie(request.isTls));
  return cookie == cookies.end() ? std::nullopt : grants.Find(Grant::Kind::kSession, cookie->second);
}

bool CarriesLogin(const HttpRequest& request) {
  return !request.authorization.empty() || ParseCookies(request.cookies).contains(SessionCookie(request.isTls));
}

HttpError NotLoggedIn(const HttpRequest& request, const std::string& reason) {
  const char* ways = request.fetchSite.empty() ? kAllWays : kWaysOfPages;
  return {401, reason, std::string("WWW-Authenticate: ") + ways + "\r\n"};
}

}  // namespace recorder
