#include "recorder/http/own_route.h"

#include <algorithm>

namespace recorder {

std::string_view TakePath(const HttpRequest& request, std::string& name) {
  std::string_view path = request.path;
  path.remove_prefix(std::min(path.size(), kOwnPrefix.size()));
  const std::size_t slash = path.find('/');
  if (slash == std::string_view::npos) return path;
  name = path.substr(slash + 1);
  return name.empty() ? std::string_view() : path.substr(0, slash + 1);
}

HttpError NoSuchRoute(const std::string& allowed) {
  if (allowed.empty()) return {404, "no such address"};
  return {405, "only " + allowed, "Allow: " + allowed + "\r\n"};
}

void Admit(const OwnRequest& request, Need need) {
  if (need == Need::kNothing || need == Need::kAsked) return;
  if (!request.caller) throw NotLoggedIn(request.http);
  if (need == Need::kAdmin && !request.caller->IsAdmin()) throw HttpError(403, "only an admin may do that");
}

}  // namespace recorder
