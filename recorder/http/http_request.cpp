#include "recorder/http/http_request.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

#include "recorder/utility/json_text.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

/// The Host header without its port.
std::string_view HostName(std::string_view host) {
  if (!host.empty() && host.front() == '[') return host.substr(0, host.find(']') + 1);
  return host.substr(0, host.find(':'));
}

/// An IPv4 address in its usual form, also where it came to a listener for IPv6 (RFC 4291 section 2.5.5.2).
std::string Unmapped(const std::string& address) {
  constexpr std::string_view kMapped = "::ffff:";
  const std::string rest = StartsWithIgnoreCase(address, kMapped) ? address.substr(kMapped.size()) : "";
  const bool isMapped = rest.find('.') != std::string::npos && rest.find(':') == std::string::npos;
  return isMapped ? rest : address;
}

HttpRequest ReadHead(const std::function<const char*(const char*)>& variable) {
  const auto text = [&](const char* name) {
    const char* value = variable(name);
    return std::string(value == nullptr ? "" : value);
  };
  HttpRequest request;
  request.method = text("REQUEST_METHOD");
  request.path = text("SCRIPT_NAME") + text("PATH_INFO");
  request.query = text("QUERY_STRING");
  request.contentType = text("CONTENT_TYPE");
  request.cookies = text("HTTP_COOKIE");
  request.authorization = text("HTTP_AUTHORIZATION");
  request.host = text("HTTP_HOST");
  request.origin = text("HTTP_ORIGIN");
  request.fetchSite = text("HTTP_SEC_FETCH_SITE");
  request.ifNoneMatch = text("HTTP_IF_NONE_MATCH");
  request.ifMatch = text("HTTP_IF_MATCH");
  request.accept = text("HTTP_ACCEPT");
  request.lastEventId = text("HTTP_LAST_EVENT_ID");
  request.address = Unmapped(text("REMOTE_ADDR"));
  request.remoteUser = text("REMOTE_USER");
  request.remoteRole = text("REMOTE_ROLE");
  request.isTls = text("HTTPS") == "on";
  constexpr std::array kHeadersOfProxies = {"HTTP_X_FORWARDED_FOR", "HTTP_FORWARDED", "HTTP_X_REAL_IP", "HTTP_VIA"};
  request.isForwarded =
      std::ranges::any_of(kHeadersOfProxies, [&](const char* name) { return variable(name) != nullptr; });
  return request;
}

}  // namespace

HttpRequest ReadHttpRequest(const Exchange& exchange, const std::function<std::size_t(std::string_view)>& largestBody) {
  HttpRequest request = ReadHead(exchange.variable);
  const char* length = exchange.variable("CONTENT_LENGTH");
  if (length == nullptr || *length == '\0') return request;
  const auto size = ParseNumber<std::int64_t>(length);
  if (!size || *size < 0) throw HttpError(400, "the Content-Length is not a number");
  if (*size > static_cast<std::int64_t>(largestBody(request.path))) throw HttpError(413, kBodyTooLarge);
  request.body = exchange.readBody(static_cast<std::size_t>(*size));
  if (request.body.size() != static_cast<std::size_t>(*size)) throw HttpError(400, "the body ended early");
  return request;
}

void CheckSameSite(const HttpRequest& request, const std::vector<std::string>& hostNames) {
  const std::string_view name = HostName(request.host);
  const bool knownHost = name == "localhost" || IsNumericAddress(name) ||
                         std::any_of(hostNames.begin(), hostNames.end(),
                                     [&](const std::string& known) { return EqualsIgnoreCase(known, name); });
  if (!knownHost) throw HttpError(403, "this server does not go by the name in the Host header");
  if (!request.origin.empty() && request.origin != "http://" + request.host &&
      request.origin != "https://" + request.host) {
    throw HttpError(403, "requests of other sites are refused (Origin)");
  }
  if (!request.fetchSite.empty() && request.fetchSite != "same-origin" && request.fetchSite != "none") {
    throw HttpError(403, "requests of other sites are refused (Sec-Fetch-Site)");
  }
}

bool IsOfThisMachine(const HttpRequest& request) {
  constexpr std::array<std::string_view, 3> kOwnNames = {"localhost", "127.0.0.1", "[::1]"};
  const bool isFromHere = request.address == "127.0.0.1" || request.address == "::1";
  return isFromHere && !request.isForwarded && std::ranges::find(kOwnNames, HostName(request.host)) != kOwnNames.end();
}

std::map<std::string, std::string> ParseCookies(std::string_view header) {
  std::map<std::string, std::string> cookies;
  for (const std::string_view part : Split(header, ';')) {
    const std::string_view pair = Trimmed(part);
    const std::size_t equals = pair.find('=');
    if (equals == std::string_view::npos) continue;
    cookies.emplace(pair.substr(0, equals), pair.substr(equals + 1));
  }
  return cookies;
}

std::string BodyType(const HttpRequest& request) {
  return LowerCase(Trimmed(std::string_view(request.contentType).substr(0, request.contentType.find(';'))));
}

Json::Value ParseJsonObject(const std::string& text) {
  std::string mistakes;
  std::optional<Json::Value> params = ParseStrictJson(text, mistakes);
  if (!params || !params->isObject()) {
    throw HttpError(400, "the body must be a JSON object" + (mistakes.empty() ? "" : ": " + mistakes));
  }
  return *std::move(params);
}

}  // namespace recorder
