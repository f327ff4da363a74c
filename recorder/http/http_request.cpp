#include "recorder/http/http_request.h"

#include <algorithm>

#include "recorder/net/percent.h"
#include "recorder/records/trust.h"
#include "recorder/utility/json_text.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

constexpr std::string_view kUserPrefix = "/api/";
constexpr std::string_view kTrustedPrefix = "/trusted/";  // no login: the module admits the caller or not

std::vector<std::string_view> Split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  while (true) {
    const std::size_t end = text.find(separator);
    parts.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return parts;
    text.remove_prefix(end + 1);
  }
}

std::string DecodeFormText(std::string_view text) {
  if (IsPercentEncoded(text)) return FormDecoded(text);
  throw HttpError(400, "a percent sign in a form or query must be followed by two hexadecimal digits");
}

/// The Host header without its port.
std::string_view HostName(std::string_view host) {
  if (!host.empty() && host.front() == '[') return host.substr(0, host.find(']') + 1);
  return host.substr(0, host.find(':'));
}

/// Refuses what a browser sends on behalf of another site, and names that an attacker could point at this server.
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

const ModuleMethod& FindMethod(std::string_view path, const ModuleLibrary& module) {
  if (!path.starts_with(kUserPrefix) && !path.starts_with(kTrustedPrefix)) throw HttpError(404, "no such address");
  path.remove_prefix(path.find('/', 1) + 1);
  const std::vector<std::string_view> parts = Split(path, '/');
  if (parts.size() != 3) throw HttpError(404, "the address must be /api/<API name>/<version>/<method>");

  const auto has = [&](auto&& predicate) {
    return std::any_of(module.Methods().begin(), module.Methods().end(), predicate);
  };
  if (!has([&](const ModuleMethod& row) { return row.apiName == parts[0]; })) throw HttpError(404, "unknown API");
  const auto version = ParseNumber<std::int64_t>(parts[1]);
  if (!has([&](const ModuleMethod& row) { return row.apiName == parts[0] && row.version == version; })) {
    throw HttpError(404, "unknown version of this API");
  }
  const ModuleMethod* method = module.Find(parts[0], static_cast<std::int32_t>(*version), parts[2]);
  if (method == nullptr) throw HttpError(404, "unknown method of this API");
  return *method;
}

/// An address ends up in logs and histories, so only what carries no secret may stand in it.
bool MayBeGet(const HttpRequest& request, const ModuleMethod& method) {
  return request.path.starts_with(kUserPrefix) && ContactsNoCamera(method.name);
}

std::size_t LargestBody(std::string_view path) {
  return TakesList(path.substr(path.rfind('/') + 1)) ? kLargestListBody : kLargestBody;
}

Json::Value ReadParameters(const HttpRequest& request, const ModuleMethod& method) {
  if (MayBeGet(request, method)) {
    if (request.method == "GET") return ParseForm(request.query);
    if (request.method != "POST") throw HttpError(405, "only GET and POST", "GET, POST");
  } else if (request.method != "POST") {
    throw HttpError(405, "only POST: the parameters may hold a secret", "POST");
  }
  if (!request.query.empty()) throw HttpError(400, "POST carries its parameters in the body, not in the address");
  const std::string_view type = Trimmed(std::string_view(request.contentType).substr(0, request.contentType.find(';')));
  if (EqualsIgnoreCase(type, "application/json")) return ParseJsonObject(request.body);
  if (EqualsIgnoreCase(type, "application/x-www-form-urlencoded")) return ParseForm(request.body);
  if (type.empty() && request.body.empty()) return Json::Value(Json::objectValue);
  throw HttpError(415, "the body must be application/json or application/x-www-form-urlencoded");
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

}  // namespace

HttpRequest ReadHttpRequest(const std::function<const char*(const char*)>& variable,
                            const std::function<std::string(std::size_t)>& readBody) {
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
  request.host = text("HTTP_HOST");
  request.origin = text("HTTP_ORIGIN");
  request.fetchSite = text("HTTP_SEC_FETCH_SITE");
  request.remoteUser = text("REMOTE_USER");

  const std::string length = text("CONTENT_LENGTH");
  if (length.empty()) return request;
  const auto size = ParseNumber<std::int64_t>(length);
  if (!size || *size < 0) throw HttpError(400, "the Content-Length is not a number");
  if (*size > static_cast<std::int64_t>(LargestBody(request.path))) throw HttpError(413, kBodyTooLarge);
  request.body = readBody(static_cast<std::size_t>(*size));
  if (request.body.size() != static_cast<std::size_t>(*size)) throw HttpError(400, "the body ended early");
  return request;
}

bool IsUntimely(const HttpRequest& request) {
  return request.path.starts_with(kTrustedPrefix) && !IsTimely(ParseCookies(request.cookies)["timestamp"]);
}

ApiCall ToApiCall(const HttpRequest& request, const ModuleLibrary& module, const std::vector<std::string>& hostNames) {
  CheckSameSite(request, hostNames);
  ApiCall call;
  call.method = &FindMethod(request.path, module);
  call.params = ReadParameters(request, *call.method);
  call.cookies = ParseCookies(request.cookies);
  call.isAuthorized = request.path.starts_with(kUserPrefix) && !request.remoteUser.empty();
  return call;
}

Json::Value ParseForm(std::string_view form) {
  Json::Value params(Json::objectValue);
  for (const std::string_view pair : Split(form, '&')) {
    if (pair.empty()) continue;
    const std::size_t equals = pair.find('=');
    const std::string key = DecodeFormText(pair.substr(0, equals));
    const bool hasValue = equals != std::string_view::npos;
    if (params.isMember(key)) throw HttpError(400, "the parameter \"" + key + "\" is given twice");
    if (params.size() == kMostParameters) throw HttpError(400, "too many parameters");
    params[key] = FormValue(hasValue ? DecodeFormText(pair.substr(equals + 1)) : "");
  }
  return params;
}

Json::Value FormValue(const std::string& text) {
  if (text == "true") return true;
  if (text == "false") return false;
  const auto number = ParseNumber<std::int64_t>(text);
  if (number && std::to_string(*number) == text) return Json::Value(static_cast<Json::Int64>(*number));
  return text;
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
