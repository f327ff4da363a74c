// recorder-webapi: serves API calls as a FastCGI responder, or one call as a CGI program (RFC 3875). One process serves
// one request at a time; a web server runs several.

#include <fcntl.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string>

#include "recorder/access/granting.h"
#include "recorder/host/host.h"
#include "recorder/http/api_request.h"
#include "recorder/http/caller.h"
#include "recorder/http/cgi_answer.h"
#include "recorder/http/crowd.h"
#include "recorder/http/fastcgi.h"
#include "recorder/http/line_answer.h"
#include "recorder/http/own_route.h"
#include "recorder/http/request_id.h"
#include "recorder/http/request_note.h"
#include "recorder/http/use_notes.h"
#include "recorder/media/media_pool.h"
#include "recorder/own/health.h"
#include "recorder/own/metrics.h"
#include "recorder/own/own_answer.h"
#include "recorder/utility/address_policy.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/counts.h"
#include "recorder/utility/log.h"
#include "recorder/utility/process_options.h"
#include "recorder/utility/service.h"
#include "recorder/utility/text.h"
#include "recorder/worker/large_output.h"

namespace recorder {

namespace {

/// Requests must not be able to send the recorder to itself. `port` is a variable of CGI (RFC 3875 section 4.1.15).
void LearnOwnPort(const char* port) {
  if (port != nullptr) SetOwnPort(ParseNumber<int>(port).value_or(0));
}

/// Gives what is free back to the system, if it is much: cameras or models of a list were many. One picture's memory
/// stays for the next one.
void GiveMemoryBack() {
  constexpr std::size_t kMuch = std::size_t{16} << 20;
  if (mallinfo2().fordblks > kMuch) malloc_trim(0);
}

/// Who asks: by a password, which the web server has had checked, or by a session or token. A server that does not tell
/// the role of its users has none but `user`.
Caller FindCaller(const HttpRequest& request, GrantList& grants) {
  if (!request.remoteUser.empty()) {
    return {.user = request.remoteUser, .role = ParseRole(request.remoteRole).value_or(Role::kUser)};
  }
  const std::optional<Grant> grant = FindGrant(request, grants);
  if (!grant) throw NotLoggedIn(request);
  if (IsUseToBeNoted(*grant, SecondsNow())) SendUseNote(grant->id);
  return {.user = grant->user, .role = grant->role, .grant = grant};
}

/// What the module answers.
std::string Called(const ApiCall& call, OutputCapture& output, RequestNote& note) {
  const ApiAnswer answer = RunCall(call, output);
  note.cause = answer.causes;
  note.rungs = answer.rungs;
  if (!TakesList(call.method->name)) return ToCgi(answer);
  EndSpareMedia();
  GiveMemoryBack();
  return ToCgi(answer);
}

/// The cause of a failure at a camera; "" for none.
std::string CauseIn(const OwnAnswer& answer) {
  const Json::Value& json = answer.json;
  return json.isObject() && json["error"].isObject() ? json["error"]["cause"].asString() : "";
}

/// What is left to be sent of what the recorder itself answers.
std::string AnsweredOwn(const HttpRequest& request, const Caller& caller, const OwnTools& tools, RequestNote& note) {
  const OwnAnswer answer = AnswerOwn(request, caller, tools);
  if (note.cause.empty()) note.cause = CauseIn(answer);
  std::string rest = tools.lines.Rest(answer);
  GiveMemoryBack();
  return rest;
}

/// A proxy on this machine may leave no trace in what it hands on for others.
bool IsBehindProxy(const Config& config) { return !config.proxies.empty() || !config.hostNames.empty(); }

/// What programs are told that watch the recorder. Throws HttpError.
OwnAnswer AnswerWatcher(const HttpRequest& request, const Config& config, GrantList& grants) {
  if (request.method != "GET") throw NoSuchRoute("GET");
  if (request.path == "/healthz") return AnswerAlive();
  if (request.path == "/readyz") return AnswerReady(config);
  CheckSameSite(request, config.hostNames);
  if (IsBehindProxy(config) || !IsOfThisMachine(request)) FindCaller(request, grants);
  return AnswerMetrics(config);
}

/// What is left to be sent of the answer. Throws HttpError.
std::string AnswerTo(const HttpRequest& request, const Host& host, OutputCapture& output, LineAnswer& lines,
                     RequestNote& note) {
  static GrantList grants(host.config.stateFolder);
  note.hasLogin = CarriesLogin(request);
  if (IsUntimely(request)) return ToCgi(NotAdmitted());
  note.isQuiet = IsForWatchers(request.path);
  if (note.isQuiet) return ToCgi(AnswerWatcher(request, host.config, grants));
  std::optional<Caller> caller;
  if (!IsForTrusted(request)) caller = FindCaller(request, grants);
  if (caller) {
    note.user = caller->user;
    note.hasLogin = false;  // none that may be refused
    RefuseCrowd(caller->user);
  }
  CheckSameSite(request, host.config.hostNames);
  if (caller && IsOwn(request)) return AnsweredOwn(request, *caller, {lines, host.module, output, note}, note);
  return Called(ToApiCall(request, host.module, caller.has_value()), output, note);
}

std::string AnswerOrRefusal(const Exchange& exchange, const Host& host, OutputCapture& output, RequestNote& note) {
  LineAnswer lines(exchange.send);
  try {
    LearnOwnPort(exchange.variable("SERVER_PORT"));
    return AnswerTo(ReadHttpRequest(exchange, LargestBody), host, output, lines, note);
  } catch (const std::exception& error) {
    return lines.Rest(Refusal(error));
  }
}

std::string Answer(const Exchange& exchange, const Host& host, OutputCapture& output) {
  RequestNote note = NoteOf(exchange);
  const RequestInLog named(RequestIdOf(exchange.variable), RequestInLog::Entries::kOfProcess);
  std::string answer = AnswerOrRefusal(exchange, host, output, note);
  TakeDown(note, answer);
  return answer;
}

/// Of a heap of its own, which each thread of a list would have, GiveMemoryBack does not reach the end. What a picture
/// has needed is not given back with each one, as to get it again takes a quarter of a worker's time for it.
void SetUpHeap() {
  constexpr int kPicture = 4 << 20;
  mallopt(M_ARENA_MAX, 1);
  mallopt(M_MMAP_THRESHOLD, kPicture);
  mallopt(M_TRIM_THRESHOLD, kPicture);
}

/// A small answer goes out together with the end of the request.
void Send(const std::string& answer, const FCGX_Request& request) {
  constexpr std::size_t kLarge = std::size_t{8} << 10;
  if (answer.size() >= kLarge) {
    SendLarge(request, answer);
  } else {
    FCGX_PutStr(answer.data(), static_cast<int>(answer.size()), request.out);
  }
}

/// Where all of the request was read, its connection is closed at once. Else libfcgi waits until the web server closes
/// it, which gets an error instead of the answer when something of it lies unread.
void End(FCGX_Request& request) {
  if (FCGX_GetChar(request.in) == EOF) FCGX_Detach(&request);
  FCGX_Finish_r(&request);
}

void ServeFastCgi(const Host& host) {
  FCGX_Request request;
  if (FCGX_Init() != 0 || FCGX_InitRequest(&request, 0, 0) != 0) throw std::runtime_error("cannot start FastCGI");
  // libfcgi 2.4.2 takes SIGTERM for a wish to stop accepting, and may then poll a closed descriptor for ever.
  std::signal(SIGTERM, SIG_DFL);
  OutputCapture output;
  while (FCGX_Accept_r(&request) == 0) {
    const BusyMark busy;
    Send(Answer(FastCgiExchange(request), host, output), request);
    End(request);
  }
}

std::string ReadInput(std::size_t size) {
  std::string text(size, '\0');
  text.resize(std::fread(text.data(), 1, size, stdin));
  return text;
}

bool PrintAnswer(std::string_view text) {
  return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
}

void ServeCgi(const Host& host) {
  std::optional<OutputCapture> output(std::in_place);
  const std::string answer =
      Answer({[](const char* name) { return std::getenv(name); }, &ReadInput, &PrintAnswer}, host, *output);
  output.reset();
  PrintAnswer(answer);
}

/// A FastCGI server may start its workers without standard output and error; nothing else may get these descriptors.
void OpenStandardDescriptors() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) < 0 && open("/dev/null", O_RDWR) != descriptor) std::abort();
  }
}

}  // namespace

}  // namespace recorder

int main(int argc, char** argv) {
  using namespace recorder;
  OpenStandardDescriptors();
  SetUpHeap();
  std::string configFile;
  const ProcessText text{"recorder-webapi",
                         "Serves web-API calls behind a web server, as a FastCGI responder or a CGI program."};
  const ProcessOption config{"--config", configFile,
                             "configuration file (default: $RECORDER_CONFIG, or else /etc/cameracap/recorder.json)"};
  if (const std::optional<int> status = ReadOptions(text, {config}, argc, argv)) return *status;
  try {
    const Host host = StartHost(FindConfigFile(configFile));
    const ServiceLock lock(host.config.stateFolder);
    if (FCGX_IsCGI() != 0) {
      ServeCgi(host);
    } else {
      ServeFastCgi(host);
    }
  } catch (const std::exception& error) {
    LogFailure(error.what());
    return 1;
  }
  return 0;
}
