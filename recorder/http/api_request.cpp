#include "recorder/http/api_request.h"

#include <algorithm>

#include "recorder/net/percent.h"
#include "recorder/records/trust.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

constexpr std::string_view kUserPrefix = "/api/";
constexpr std::string_view kTrustedPrefix = "/trusted/";  // no login: the module admits the caller or not

std::string DecodeFormText(std::string_view text) {
  if (IsPercentEncoded(text)) return FormDecoded(text);
  throw HttpError(400, "a percent sign in a form or query must be followed by two hexadecimal digits");
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

Json::Value ReadParameters(const HttpRequest& request, const ModuleMethod& method) {
  if (MayBeGet(request, method)) {
    if (request.method == "GET") return ParseForm(request.query);
    if (request.method != "POST") throw HttpError(405, "only GET and POST", "Allow: GET, POST\r\n");
  } else if (request.method != "POST") {
    throw HttpError(405, "only POST: the parameters may hold a secret", "Allow: POST\r\n");
  }
  if (!request.query.empty()) throw HttpError(400, "POST carries its parameters in the body, not in the address");
  const std::string type = BodyType(request);
  if (type == "application/json") return ParseJsonObject(request.body);
  if (type == "application/x-www-form-urlencoded") return ParseForm(request.body);
  if (type.empty() && request.body.empty()) return Json::Value(Json::objectValue);
  throw HttpError(415, "the body must be application/json or application/x-www-form-urlencoded");
}

/// Rows of a run come by the thousand.
bool IsRowsOfRun(std::string_view path) { return path.starts_with("/recorder/1/runs/") && path.ends_with("/rows"); }

}  // namespace

std::size_t LargestBody(std::string_view path) {
  const bool isList = TakesList(path.substr(path.rfind('/') + 1)) || IsRowsOfRun(path);
  return isList ? kLargestListBody : kLargestBody;
}

bool IsForTrusted(const HttpRequest& request) { return request.path.starts_with(kTrustedPrefix); }

bool IsUntimely(const HttpRequest& request) {
  return IsForTrusted(request) && !IsTimely(ParseCookies(request.cookies)["timestamp"]);
}

ApiCall ToApiCall(const HttpRequest& request, const ModuleLibrary& module, bool isAuthorized) {
  ApiCall call;
  call.method = &FindMethod(request.path, module);
  call.params = ReadParameters(request, *call.method);
  call.cookies = ParseCookies(request.cookies);
  call.isAuthorized = isAuthorized;
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

}  // namespace recorder
