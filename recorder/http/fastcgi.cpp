#include "recorder/http/fastcgi.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace recorder {

namespace {

/// The variables of a request. FCGX_GetParam, which goes through their text for each question, takes a sixth of all
/// that a worker does for a short answer.
class Variables {
 public:
  explicit Variables(char** environment) {
    constexpr std::size_t kUsual = 32;
    all_.reserve(kUsual);
    for (; environment != nullptr && *environment != nullptr; ++environment) Add(*environment);
  }

  const char* operator()(std::string_view name) const {
    const auto found = std::ranges::find(all_, name, &Variable::first);
    return found == all_.end() ? nullptr : found->second;
  }

 private:
  using Variable = std::pair<std::string_view, const char*>;  // a name, and the value up to a NUL

  void Add(std::string_view line) {
    const std::size_t equals = line.find('=');
    if (equals != std::string_view::npos) all_.emplace_back(line.substr(0, equals), line.data() + equals + 1);
  }

  std::vector<Variable> all_;
};

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
  return {.variable = Variables(request.envp),
          .readBody = [&](std::size_t size) { return ReadBody(request, size); },
          .send = [&](std::string_view text) { return SendNow(request, text); }};
}

void Finish(FCGX_Request& request, const std::string& answer) {
  FCGX_PutStr(answer.data(), static_cast<int>(answer.size()), request.out);
  FCGX_Finish_r(&request);
}

}  // namespace recorder
