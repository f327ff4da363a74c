#pragma once

#include <json/value.h>

#include <cstdint>
#include <optional>
#include <string>

#include "recorder/http/caller.h"
#include "recorder/http/json_answer.h"

// Requests below /recorder/1/: recorder-login serves those about sessions, users and tokens, the workers all others.

namespace recorder {

/// One request, as its handler gets it.
struct OwnRequest {
  const HttpRequest& http;
  std::string name;  ///< what stands behind the route's address, where that ends with '/' or holds '*'
  Json::Value params{Json::objectValue};
  std::optional<Caller> caller = {};
};

/// {"success": true, "data": ...}
OwnAnswer Success(Json::Value data);

/// A parameter, of the query or of the JSON in the body; "" and false when it is missing. Throws HttpError when it has
/// another type.
std::string TextOf(const OwnRequest& request, const char* member);
bool FlagOf(const OwnRequest& request, const char* member);

/// A whole number from `least` to `most`; `missing` when there is none. Throws HttpError when it is anything else.
int NumberOf(const OwnRequest& request, const char* member, int least, int most, int missing);

/// A text as answers have it: null where it is empty.
Json::Value TextOrNull(const std::string& text);

/// A time as answers have it: null for none.
Json::Value TimeOf(std::int64_t seconds);

/// The JSON object in the body of a request; an empty one when it has no body. Throws HttpError.
Json::Value ReadJsonBody(const HttpRequest& request);

}  // namespace recorder
