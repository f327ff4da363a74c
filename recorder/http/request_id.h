#pragma once

#include <functional>
#include <string>

namespace recorder {

/// The id of a request, from its CGI variables: the one that recorder-login gave it, when that has seen it before; that
/// of its header X-Request-Id, when a configured proxy has sent it and it is 1 to 64 of [A-Za-z0-9._-]; else a new one
/// of 16 hexadecimal digits.
std::string RequestIdOf(const std::function<const char*(const char*)>& variable);

/// The variable in which recorder-login hands it on.
inline constexpr char kRequestIdVariable[] = "REQUEST_ID";

/// The web server sets it when it believes a proxy whom a request is for; no client can.
inline constexpr char kProxyVariable[] = "_L_EXTFORWARD_ACTUAL_FOR";

}  // namespace recorder
