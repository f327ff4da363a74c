// recorder-login: the one process that reads the hashes of users' passwords. Behind the web server it tells whether a
// name and a password are right, and serves the addresses about sessions, users and tokens.

#include <sys/prctl.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "recorder/http/json_answer.h"
#include "recorder/http/request_id.h"
#include "recorder/http/request_note.h"
#include "recorder/http/use_notes.h"
#include "recorder/login/grant_use.h"
#include "recorder/login/late_answers.h"
#include "recorder/login/login_answer.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/log.h"
#include "recorder/utility/process_options.h"

namespace recorder {

namespace {

/// Of these, one works with a password and twelve can wait for that (see Turns): the others serve whoever has a session
/// or token.
constexpr int kThreads = 16;

TimedAnswer AnswerTo(LoginService& service, const Exchange& exchange, RequestNote& note) try {
  const char* role = exchange.variable("FCGI_ROLE");
  const bool isAuthorizer = role != nullptr && std::string_view(role) == "AUTHORIZER";
  const HttpRequest http = ReadHttpRequest(exchange, [](auto /*path*/) { return kLargestBody; });
  return isAuthorizer ? Authorize(service, http, note) : AnswerLogin(service, http, note);
} catch (const HttpError& error) {
  return {ToCgi(Refusal(error))};
}

TimedAnswer Answer(LoginService& service, FCGX_Request& request) {
  const Exchange exchange = FastCgiExchange(request);
  RequestNote note = NoteOf(exchange);
  const RequestInLog named(RequestIdOf(exchange.variable), RequestInLog::Entries::kOfThread);
  TimedAnswer answer = AnswerTo(service, exchange, note);
  TakeDown(note, answer.text);
  return answer;
}

/// Another process is started then, with all its threads.
[[noreturn]] void GiveUp() {
  LogFailure("cannot accept requests");
  std::_Exit(EXIT_FAILURE);
}

void Serve(LoginService& service, LateAnswers& later) {
  while (true) {
    auto request = std::make_unique<FCGX_Request>();
    if (FCGX_InitRequest(request.get(), 0, 0) != 0 || FCGX_Accept_r(request.get()) != 0) GiveUp();
    TimedAnswer answer = Answer(service, *request);
    if (answer.isLate) {
      later.Add(std::move(request), std::move(answer.text));
    } else {
      Finish(*request, answer.text);
    }
  }
}

void TakeNotes(const UseNotes& notes, const std::filesystem::path& stateFolder) {
  while (true) {
    TryNoteUse(stateFolder, notes.Next());
  }
}

void Run(const std::string& configFile, const std::string& useSocket) {
  const Config config = LoadConfig(configFile);
  UseConfig(config);
  if (FCGX_Init() != 0) throw std::runtime_error("cannot start FastCGI");
  std::signal(SIGTERM, SIG_DFL);  // libfcgi takes it for a wish to stop accepting
  LoginService service(config);
  if (!useSocket.empty()) {
    std::thread([notes = UseNotes(useSocket), folder = config.stateFolder] { TakeNotes(notes, folder); }).detach();
  }
  LateAnswers later;
  std::vector<std::jthread> threads;
  threads.reserve(kThreads);
  for (int i = 0; i < kThreads; ++i) threads.emplace_back([&] { Serve(service, later); });
}

}  // namespace

}  // namespace recorder

int main(int argc, char** argv) {
  using namespace recorder;
  std::string configFile = "/etc/cameracap/recorder.json";
  std::string useSocket;
  const ProcessText text{"recorder-login", "Checks logins behind a web server, as a FastCGI responder and authorizer."};
  const std::vector<ProcessOption> options{
      {"--config", configFile, "configuration file (default: /etc/cameracap/recorder.json)", "RECORDER_CONFIG"},
      {"--use-socket", useSocket, "socket at which workers tell which session or token is in use", kUseSocketVariable}};
  if (const std::optional<int> status = ReadOptions(text, options, argc, argv)) return *status;
  prctl(PR_SET_DUMPABLE, 0);  // nobody reads passwords out of it while it runs
  try {
    Run(configFile, useSocket);
  } catch (const std::exception& error) {
    LogFailure(error.what());
    return 1;
  }
  return 0;
}
