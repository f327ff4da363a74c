#include "recorder/own/own_answer.h"

#include "recorder/http/api_request.h"
#include "recorder/own/own_routes.h"

namespace recorder {

bool IsOwn(const HttpRequest& request) { return request.path.starts_with(kOwnPrefix); }

OwnAnswer AnswerOwn(const HttpRequest& http, const Caller& caller, OwnTools tools) {
  OwnRequest request{.http = http, .name = {}, .caller = caller};
  const OwnRoute& route = FindRoute(OwnRoutes(), http, request.name);
  Admit(request, route.need);
  request.params = http.method == "GET" ? ParseForm(http.query) : ReadJsonBody(http);
  return route.handler(request, tools);
}

}  // namespace recorder
