#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "recorder/host/api_call.h"
#include "recorder/host/module_library.h"
#include "recorder/http/http_request.h"

namespace recorder {

/// Bytes that the body of a request to this address may have.
std::size_t LargestBody(std::string_view path);

/// True for a request below /trusted/, which needs no login: the module itself admits the caller or not.
bool IsForTrusted(const HttpRequest& request);

/// True for a request below /trusted/ whose pair is none by its time alone: nobody needs to look at the rest of it.
bool IsUntimely(const HttpRequest& request);

/// The call that an address `/api/<API name>/<version>/<method>` or `/trusted/...` asks for. POST carries a JSON object
/// or a form; GET, below /api/ and for methods that touch no camera, a query. `isAuthorized`: a user asks. Throws
/// HttpError.
ApiCall ToApiCall(const HttpRequest& request, const ModuleLibrary& module, bool isAuthorized);

/// Parameters of a form or query (application/x-www-form-urlencoded). A value that is an integer in 64 bits, `true` or
/// `false` is that value, provided that it converts back to the very same text; anything else is text. Throws
/// HttpError.
Json::Value ParseForm(std::string_view form);

/// A value as a form has it.
Json::Value FormValue(const std::string& text);

}  // namespace recorder
