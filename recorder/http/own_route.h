#pragma once

#include <string>
#include <string_view>

#include "recorder/http/own_request.h"

namespace recorder {

inline constexpr std::string_view kOwnPrefix = "/recorder/1/";

/// Who may ask.
enum class Need {
  kNothing,  ///< whoever asks, it does not matter who
  kAsked,    ///< the handler decides
  kUser,
  kAdmin,
};

/// What the address of a request matches in a table of routes, and the name behind that: "users/" and "hall". A path
/// that ends with '/' and has no name matches nothing.
std::string_view TakePath(const HttpRequest& request, std::string& name);

/// The refusal of a verb where only those of `allowed` ("GET, POST") are; of the address where that is empty.
HttpError NoSuchRoute(const std::string& allowed);

/// The row of a table for this request, and its name. A row begins with `verb` and `path`, the address behind
/// kOwnPrefix, which ends with '/' when a name follows. Throws HttpError: 404, or 405 with the header Allow.
template <class Routes>
const auto& FindRoute(const Routes& routes, const HttpRequest& request, std::string& name) {
  const std::string_view path = TakePath(request, name);
  std::string allowed;
  for (const auto& route : routes) {
    if (route.path != path) continue;
    if (route.verb == request.method) return route;
    allowed += (allowed.empty() ? "" : ", ") + std::string(route.verb);
  }
  throw NoSuchRoute(allowed);
}

/// Refuses a caller who may not ask. Throws HttpError: 401 or 403.
void Admit(const OwnRequest& request, Need need);

}  // namespace recorder
