#include "recorder/http/fastcgi.h"

namespace recorder {

namespace {

std::string ReadBody(FCGX_Request& request, std::size_t size) {
  std::string body(size, '\0');
  const int count = FCGX_GetStr(body.data(), static_cast<int>(size), request.in);
  body.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  return body;
}

bool SendNow(FCGX_Request& request, std::string_view text) {
  const int size = static_cast<int>(text.size());
  return FCGX_PutStr(text.data(), size, request.out) == size && FCGX_FFlush(request.out) == 0;
}

}  // namespace

Exchange FastCgiExchange(FCGX_Request& request) {
  return {.variable = [&](const char* name) { return FCGX_GetParam(name, request.envp); },
          .readBody = [&](std::size_t size) { return ReadBody(request, size); },
          .send = [&](std::string_view text) { return SendNow(request, text); }};
}

void Finish(FCGX_Request& request, const std::string& answer) {
  FCGX_PutStr(answer.data(), static_cast<int>(answer.size()), request.out);
  FCGX_Finish_r(&request);
}

}  // namespace recorder
