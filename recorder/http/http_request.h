#pragma once

#include <json/value.h>

#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "recorder/http/exchange.h"

namespace recorder {

/// A request that is refused, with the HTTP status and the reason to answer.
class HttpError : public std::runtime_error {
 public:
  /// `headers`: what the answer carries besides, each line with its end: "Allow: GET\r\n".
  HttpError(int status, const std::string& reason, std::string headers = {})
      : std::runtime_error(reason), status_(status), headers_(std::move(headers)) {}
  int Status() const { return status_; }
  const std::string& Headers() const { return headers_; }
  const Json::Value& More() const { return more_; }

  /// The same with a member beside code and message: what programs need to know of it.
  HttpError With(const std::string& member, const Json::Value& value) const {
    HttpError other = *this;
    other.more_[member] = value;
    return other;
  }

 private:
  int status_;
  std::string headers_;
  Json::Value more_{Json::objectValue};
};

/// One request as a web server hands it to a CGI or FastCGI program (RFC 3875).
struct HttpRequest {
  std::string method;  ///< "GET"
  std::string path;    ///< of the address, percent-decoded by the server
  std::string query;   ///< of the address, still encoded
  std::string contentType;
  std::string body;
  std::string cookies;        ///< the Cookie header
  std::string authorization;  ///< the Authorization header
  std::string host;           ///< the Host header
  std::string origin;         ///< the Origin header
  std::string fetchSite;      ///< the Sec-Fetch-Site header
  std::string ifNoneMatch;    ///< the If-None-Match header
  std::string ifMatch;        ///< the If-Match header
  std::string accept;         ///< the Accept header
  std::string lastEventId;    ///< the Last-Event-ID header
  std::string address;        ///< of whoever asks; of IPv4 without the prefix of IPv6
  std::string remoteUser;     ///< the user that the server has authenticated, or ""
  std::string remoteRole;     ///< his role, or "": recorder-login tells it with him
  bool isTls = false;
  bool isForwarded = false;  ///< a header says that a proxy has sent it for somebody else
};

/// Reads a request, whose body may have as many bytes as `largestBody` says of its path. Throws HttpError.
HttpRequest ReadHttpRequest(const Exchange& exchange, const std::function<std::size_t(std::string_view)>& largestBody);

/// Refuses what a browser sends on behalf of another site, and names that an attacker could point at this server:
/// `hostNames` are those it goes by, besides "localhost" and numeric addresses. Throws HttpError.
void CheckSameSite(const HttpRequest& request, const std::vector<std::string>& hostNames);

/// True for a request that a program on this machine sends itself, to an address of this machine alone: not through a
/// proxy, as far as that leaves a trace.
bool IsOfThisMachine(const HttpRequest& request);

/// The first of each name counts.
std::map<std::string, std::string> ParseCookies(std::string_view header);

/// The type of the body in lower case, without its parameters.
std::string BodyType(const HttpRequest& request);

/// Reads text as the JSON object of parameters. Throws HttpError.
Json::Value ParseJsonObject(const std::string& text);

}  // namespace recorder
