// A worker whose one handler tells a line and then waits for the file that the query names; or, below /recorder/1/on,
// tells lines as long as anybody takes them, and makes that file then.

#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "recorder/http/fastcgi.h"
#include "recorder/http/line_answer.h"
#include "recorder/http/own_request.h"

namespace {

recorder::OwnAnswer Answer(const recorder::Exchange& exchange, recorder::LineAnswer& lines) {
  const std::filesystem::path file = exchange.variable("QUERY_STRING");
  const bool goesOn = std::string_view(exchange.variable("REQUEST_URI")).starts_with("/recorder/1/on");
  Json::Value line;
  line["line"] = "first";
  const auto isThere = [&] { return std::filesystem::exists(file); };
  bool isWanted = lines.Tell(line);
  while (goesOn ? isWanted : !isThere()) {
    usleep(10'000);
    if (goesOn) isWanted = lines.Tell(line);
  }
  std::ofstream(file) << "ended";
  return recorder::Success("last");
}

}  // namespace

int main() {
  FCGX_Request request;
  if (FCGX_Init() != 0 || FCGX_InitRequest(&request, 0, 0) != 0) return 1;
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGTERM, SIG_DFL);  // libfcgi takes it for a wish to stop accepting
  while (FCGX_Accept_r(&request) == 0) {
    const recorder::Exchange exchange = recorder::FastCgiExchange(request);
    recorder::LineAnswer lines(exchange.send);
    recorder::Finish(request, lines.Rest(Answer(exchange, lines)));
  }
  return 0;
}
