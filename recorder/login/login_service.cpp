#include "recorder/login/login_service.h"

namespace recorder {

LoginAnswer Success(const Json::Value& data) {
  Json::Value json(Json::objectValue);
  json["success"] = true;
  json["data"] = data;
  return {200, json};
}

std::string TextOf(const LoginRequest& request, const char* member) {
  const Json::Value& value = request.params[member];
  if (!value.isNull() && !value.isString()) throw HttpError(400, std::string(member) + " must be a text");
  return value.asString();
}

bool FlagOf(const LoginRequest& request, const char* member) {
  const Json::Value& value = request.params[member];
  if (!value.isNull() && !value.isBool()) throw HttpError(400, std::string(member) + " must be true or false");
  return value.asBool();
}

Json::Value TimeOf(std::int64_t seconds) { return seconds == 0 ? Json::Value() : Json::Value(Json::Int64(seconds)); }

}  // namespace recorder
