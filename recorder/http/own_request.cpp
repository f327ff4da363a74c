#include "recorder/http/own_request.h"

#include <utility>

namespace recorder {

OwnAnswer Success(Json::Value data) {
  Json::Value json(Json::objectValue);
  json["success"] = true;
  json["data"] = std::move(data);
  return {200, std::move(json)};
}

std::string TextOf(const OwnRequest& request, const char* member) {
  const Json::Value& value = request.params[member];
  const bool isQuery = request.http.method == "GET";  // where "2100" has become a number
  const bool isText = value.isNull() || value.isString() || isQuery;
  if (!isText) throw HttpError(400, std::string(member) + " must be a text");
  return value.asString();
}

bool FlagOf(const OwnRequest& request, const char* member) {
  const Json::Value& value = request.params[member];
  if (!value.isNull() && !value.isBool()) throw HttpError(400, std::string(member) + " must be true or false");
  return value.asBool();
}

int NumberOf(const OwnRequest& request, const char* member, int least, int most, int missing) {
  const Json::Value& value = request.params[member];
  if (value.isNull()) return missing;
  if (value.isInt() && value.asInt() >= least && value.asInt() <= most) return value.asInt();
  throw HttpError(
      400, std::string(member) + " must be a number from " + std::to_string(least) + " to " + std::to_string(most));
}

Json::Value TextOrNull(const std::string& text) { return text.empty() ? Json::Value() : Json::Value(text); }

Json::Value TimeOf(std::int64_t seconds) { return seconds == 0 ? Json::Value() : Json::Value(Json::Int64(seconds)); }

Json::Value ReadJsonBody(const HttpRequest& request) {
  if (request.body.empty()) return Json::Value(Json::objectValue);
  if (BodyType(request) != "application/json") throw HttpError(415, "the body must be application/json");
  return ParseJsonObject(request.body);
}

}  // namespace recorder
