#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "bench/rows.h"
#include "bench/trusted_client.h"
#include "recorder/http/cgi_answer.h"
#include "rig/callers.h"
#include "rig/http_client.h"
#include "rig/processes.h"
#include "rig/questions.h"
#include "rig/recorder.h"

namespace bench {

using namespace rig;

namespace {

constexpr int kCallers[] = {1, 4, 16, 64};
constexpr std::chrono::milliseconds kSample{300};
/// What is checked of a trusted client is a pair that is signed anew each time, and one caller keeps no processor busy.
Goal RateGoal(bool isTrusted, int callers) {
  return {.kind = Goal::Kind::kAtLeast, .bound = isTrusted || callers == 1 ? 0.6 : 0.8};
}

constexpr int kMixedRequests = 10'000;
constexpr int kMixedCallers = 8;
constexpr Goal kMemoryGoal{.bound = 0.6};

/// A whole answer as the recorder's workers write it.
std::string CgiAnswer(const std::string& body) {
  recorder::ApiAnswer answer;
  answer.kind = recorder::ApiAnswer::Kind::kJson;
  answer.json = body;
  return recorder::ToCgi(answer);
}

void CheckTally(const Tally& tally) {
  if (tally.answered != tally.Asked()) throw WrongAnswer(tally.FirstTrouble());
}

/// A request, and the whole body of its answer.
struct Exchange {
  std::string request;
  std::string body;
};

/// As a script of a user asks.
Exchange WithToken(const TestRecorder& recorder) {
  const std::string query = "vendor=Simcam&model=RTSP-H264";
  const std::string token = Words(recorder.Control({"token", "add", "bench"}).output).front();
  return {HttpRequest("GET", kApi + ("CamCap?" + query), {{"Authorization", "Bearer " + token}}),
          recorder.Get("CamCap", query).body};
}

Exchange Trusted(const TestRecorder& recorder) {
  Json::Value parameters;
  parameters["vendor"] = "Simcam";
  parameters["model"] = "RTSP-H264";
  const std::string request = TrustedClient(recorder, "bench").Request("CamCap", parameters);
  return {request, HttpClient(recorder.Port()).Ask(request).body};
}

/// Requests a second.
Way Rate(const TestRecorder& recorder, int callers, const Exchange& exchange) {
  const Question question{"CamCap", exchange.request, [body = exchange.body](const Reply& reply) {
                            return reply.body == body ? "" : "another answer: " + reply.body;
                          }};
  const std::vector<Callers::Source> sources(static_cast<std::size_t>(callers),
                                             Callers::Source([question] { return Question(question); }));
  return [&recorder, sources] {
    Tally tally;
    const double time = TimeOf([&] {
      Callers running(recorder.Port(), sources);
      std::this_thread::sleep_for(kSample);
      tally = running.Stop();
    });
    CheckTally(tally);
    return static_cast<double>(tally.answered) / time * 1000;
  };
}

std::string RateText(double rate) { return NumberText(rate, 0) + " a second"; }
std::string MemoryText(long kiB) { return NumberText(static_cast<double>(kiB) / 1024, 1) + " MiB"; }

/// In KiB; ffmpeg tells it itself.
long PeakOfFfmpeg(const std::string& address, const TempFolder& folder) {
  const std::string output = (folder.Path() / "picture.jpg").string();
  const std::string options = "-nostdin -y -benchmark -rtsp_transport tcp -probesize 32 -analyzeduration 0 -i ";
  const std::string text = rig::Run("/usr/bin/ffmpeg", Words(options + address + " -frames:v 1 " + output)).output;
  const std::string name = "maxrss=";
  const std::size_t place = text.find(name);
  if (place == std::string::npos) throw WrongAnswer("ffmpeg tells no peak: " + text);
  return std::stol(text.substr(place + name.size()));
}

}  // namespace

void AddCallerRows(Report& table) {
  const TestRecorder recorder;
  const Exchange withToken = WithToken(recorder);
  const TempFolder folder;
  setenv("BENCH_ANSWER", folder.Write("answer", CgiAnswer(withToken.body)).c_str(), 1);
  const TestRecorder empty({.serveArguments = {"--worker", PROGRAM_FOLDER "/bench_empty_responder"}});
  empty.Trust({"bench"});  // else the web server has no address for trusted recorders
  for (const bool isTrusted : {false, true}) {
    const Exchange exchange = isTrusted ? Trusted(recorder) : withToken;
    const std::string how = isTrusted ? "trusted" : "with a token";
    for (const int callers : kCallers) {
      const Comparison rates = Compare(Rate(recorder, callers, exchange), Rate(empty, callers, exchange));
      AddRow(table, "requests, " + std::to_string(callers) + (callers == 1 ? " caller, " : " callers, ") + how,
             {"CamCap over HTTP", RateText(rates.ours)},
             {"the same server and library, an empty responder", RateText(rates.other)}, rates.ratio,
             RateGoal(isTrusted, callers));
    }
  }
}

void AddMemoryRow(Report& table) {
  const TempFolder folder;
  const TempFolder models;
  Json::Value configs = CameraConfigs(kMixedCallers);
  Json::Value open = configs[0];
  open["name"] = "open";
  open["login"] = "none";
  configs.append(open);
  const SimCameras cameras(configs);
  const TestRecorder recorder({.modelsFolder = WriteModels(models, kMixedCallers)});
  std::vector<Questioner> questioners = MakeQuestioners(recorder, cameras, kMixedCallers, 0);
  CheckTally(Callers(recorder.Port(), SourcesOf(questioners, &Questioner::Any), kMixedRequests).Wait());

  long largest = 0;
  for (const ProcessInfo& worker : Descendants(getpid(), "recorder-webapi")) {
    largest = std::max(largest, PeakKiB(worker.id));
  }
  const long peak = PeakOfFfmpeg("rtsp://127.0.0.1:" + std::to_string(cameras.Port("open")) + "/stream1", folder);
  AddRow(table, "memory", {"a worker's peak in 10,000 mixed requests", MemoryText(largest)},
         {"ffmpeg's peak for one picture", MemoryText(peak)}, static_cast<double>(largest) / static_cast<double>(peak),
         kMemoryGoal);
}

}  // namespace bench
