#pragma once

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "recorder/host/api_call.h"
#include "recorder/host/module_library.h"

namespace recorder {

/// A request that the module does not get to see, with the HTTP status and the reason to answer.
class HttpError : public std::runtime_error {
 public:
  /// `allow`: for status 405, the verbs that are allowed.
  HttpError(int status, const std::string& reason, std::string allow = {})
      : std::runtime_error(reason), status_(status), allow_(std::move(allow)) {}
  int Status() const { return status_; }
  const std::string& Allow() const { return allow_; }

 private:
  int status_;
  std::string allow_;
};

/// One request as a web server hands it to a CGI or FastCGI program (RFC 3875).
struct HttpRequest {
  std::string method;  ///< "GET"
  std::string path;    ///< of the address, percent-decoded by the server
  std::string query;   ///< of the address, still encoded
  std::string contentType;
  std::string body;
  std::string cookies;     ///< the Cookie header
  std::string host;        ///< the Host header
  std::string origin;      ///< the Origin header
  std::string fetchSite;   ///< the Sec-Fetch-Site header
  std::string remoteUser;  ///< the user that the server has authenticated, or ""
};

/// Reads a request from CGI variables; `variable` gives one, or null. `readBody` reads exactly that many bytes of the
/// body. Throws HttpError.
HttpRequest ReadHttpRequest(const std::function<const char*(const char*)>& variable,
                            const std::function<std::string(std::size_t)>& readBody);

/// True for a request below /trusted/ whose pair is none by its time alone: nobody needs to look at the rest of it.
bool IsUntimely(const HttpRequest& request);

/// The call that an address `/api/<API name>/<version>/<method>` asks for, or `/trusted/...` for callers without a
/// login, whom the module itself admits. POST carries a JSON object or a form; GET, below /api/ and for methods that
/// touch no camera, a query. Refuses requests of other sites: `hostNames` are the names that this server goes by,
/// besides "localhost" and numeric addresses. Throws HttpError.
ApiCall ToApiCall(const HttpRequest& request, const ModuleLibrary& module, const std::vector<std::string>& hostNames);

/// Parameters of a form or query (application/x-www-form-urlencoded). A value that is an integer in 64 bits, `true` or
/// `false` is that value, provided that it converts back to the very same text; anything else is text. Throws
/// HttpError.
Json::Value ParseForm(std::string_view form);

/// Reads text as the JSON object of parameters. Throws HttpError.
Json::Value ParseJsonObject(const std::string& text);

/// A value as a form has it.
Json::Value FormValue(const std::string& text);

}  // namespace recorder
