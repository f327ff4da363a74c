#pragma once

#include <optional>
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

/// The name in the address of a request, where that is what `path` of a row describes: the address behind kOwnPrefix,
/// in which a '*' stands for a name without '/', and a '/' at the end for one behind it that may hold some; "" where
/// the row has none. Nothing where it is another address.
std::optional<std::string> NameIn(const HttpRequest& request, std::string_view path);

/// The refusal of a verb where only those of `allowed` ("GET, POST") are; of the address where that is empty.
HttpError NoSuchRoute(const std::string& allowed);

/// The row of a table for this request, and its name. A row begins with `verb` and `path`, as NameIn has it. Throws
/// HttpError: 404, or 405 with the header Allow.
template <class Routes>
const auto& FindRoute(const Routes& routes, const HttpRequest& request, std::string& name) {
  std::string allowed;
  for (const auto& route : routes) {
    const std::optional<std::string> found = NameIn(request, route.path);
    if (!found) continue;
    name = *found;
    if (route.verb == request.method) return route;
    allowed += (allowed.empty() ? "" : ", ") + std::string(route.verb);
  }
  throw NoSuchRoute(allowed);
}

/// Refuses a caller who may not ask. Throws HttpError: 401 or 403.
void Admit(const OwnRequest& request, Need need);

}  // namespace recorder
