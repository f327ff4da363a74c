#include "recorder/http/own_route.h"

#include <algorithm>

namespace recorder {

std::optional<std::string> NameIn(const HttpRequest& request, std::string_view path) {
  std::string_view address = request.path;
  address.remove_prefix(std::min(address.size(), kOwnPrefix.size()));
  const std::size_t star = path.find('*');
  const bool isOpen = path.ends_with('/');
  if (star == std::string_view::npos && !isOpen) return address == path ? std::optional<std::string>("") : std::nullopt;
  const std::string_view before = path.substr(0, star);
  const std::string_view after = isOpen ? std::string_view() : path.substr(star + 1);
  const bool isThere =
      address.size() > before.size() + after.size() && address.starts_with(before) && address.ends_with(after);
  if (!isThere) return std::nullopt;
  const std::string_view name = address.substr(before.size(), address.size() - before.size() - after.size());
  return isOpen || name.find('/') == std::string_view::npos ? std::optional<std::string>(name) : std::nullopt;
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
