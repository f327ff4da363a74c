#pragma once

#include <string>

#include "recorder/host/api_call.h"
#include "recorder/http/http_request.h"

namespace recorder {

// Answers as a CGI program gives them (RFC 3875 section 6): header lines, an empty line, the body.

/// What the module answered, or, with a status of its own, why there is no answer.
std::string ToCgi(const ApiAnswer& answer);

/// Why the module did not get to see the request.
std::string ToCgi(const HttpError& error);

/// `json` on one line, in UTF-8: text as it is, but where some of it (a caller's or a camera's) is no UTF-8.
std::string ToText(const Json::Value& json);

}  // namespace recorder
