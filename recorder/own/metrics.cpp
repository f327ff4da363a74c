#include "recorder/own/metrics.h"

#include <unistd.h>

#include <algorithm>
#include <string>
#include <utility>

#include "recorder/device/model/model_files.h"
#include "recorder/own/camera_tally.h"
#include "recorder/own/metrics_text.h"
#include "recorder/own/process_memory.h"
#include "recorder/records/attempts.h"
#include "recorder/utility/counts.h"
#include "recorder/utility/service.h"
#include "recorder/utility/watch_clock.h"

namespace recorder {

namespace {

constexpr double kMicro = 1e-6;

void AddCameras(MetricsText& text, const Config& config) {
  text.Begin("recorder_cameras", "gauge", "Stored cameras by what their last contact came to.");
  for (const CameraTally& tally : TallyCameras(config.stateFolder)) {
    text.Add(tally.count, Label("state", tally.state) + ',' + Label("cause", tally.cause));
  }
}

/// The process that watches tells when the first check is due, so that checks seem to be late if it hangs, too.
void AddWatch(MetricsText& text, const Config& config) {
  if (!IsServiceRunning(config.stateFolder, Service::kWatch)) return;
  const std::int64_t due = Attempts::FirstDue(config.stateFolder);
  text.Begin("recorder_watch_lateness_seconds", "gauge", "How long the check of a camera that is due longest waits.");
  text.Add(due == 0 ? 0 : static_cast<double>(std::max(WatchClock::Seconds() - due, std::int64_t{0})));
}

void AddRequests(MetricsText& text, const Counts& counts) {
  text.Begin("recorder_requests_total", "counter", "Requests that were answered, by method and class of status.");
  for (std::size_t method = 0; method < kCountedMethods.size(); ++method) {
    for (std::size_t status = 0; status < kStatusClasses.size(); ++status) {
      text.Add(static_cast<double>(counts.requests[method][status]),
               Label("method", kCountedMethods[method]) + ',' + Label("status", kStatusClasses[status]));
    }
  }
}

void AddSum(MetricsText& text, const TimeSum& sum) {
  text.Add(static_cast<double>(sum.microseconds) * kMicro, {}, "_sum");
  text.Add(static_cast<double>(sum.count), {}, "_count");
}

/// The bucket without a bound and the count are of one reading, however much is counted meanwhile.
void AddTimes(MetricsText& text, const Counts& counts) {
  text.Begin("recorder_request_duration_seconds", "histogram",
             "Time from taking a request until its answer was ready.");
  double upToHere = 0;
  for (std::size_t i = 0; i < counts.times.size(); ++i) {
    upToHere += static_cast<double>(counts.times[i]);
    const std::string bound = i < kTimeBounds.size() ? NumberText(kTimeBounds[i]) : "+Inf";
    text.Add(upToHere, Label("le", bound), "_bucket");
  }
  text.Add(static_cast<double>(counts.answers.microseconds) * kMicro, {}, "_sum");
  text.Add(upToHere, {}, "_count");
}

void AddKeyFrames(MetricsText& text, const Counts& counts) {
  text.Begin("recorder_key_frame_wait_seconds", "summary", "Time that pictures over RTSP waited for a key frame.");
  AddSum(text, counts.keyFrames);
}

void AddWorkers(MetricsText& text, const Counts& counts) {
  text.Begin("recorder_workers", "gauge", "Processes that answer requests, by pool and state.");
  for (const auto& [name, pool] : {std::pair("cameras", &counts.cameraWorkers), {"lists", &counts.listWorkers}}) {
    const auto there = static_cast<double>(std::ranges::count_if(*pool, &WorkerCount::IsThere));
    const auto free = static_cast<double>(std::ranges::count_if(*pool, &WorkerCount::IsFree));
    text.Add(std::max(there - free, 0.0), Label("pool", name) + ',' + Label("state", "busy"));
    text.Add(free, Label("pool", name) + ',' + Label("state", "free"));
  }
  text.Begin("recorder_processes_ended_total", "counter", "Processes that died and were replaced.");
  for (std::size_t i = 0; i < kPrograms.size(); ++i) {
    text.Add(static_cast<double>(counts.ended[i]), Label("program", kPrograms[i]));
  }
}

void AddMemory(MetricsText& text) {
  text.Begin("recorder_memory_bytes", "gauge",
             "Memory of all processes of the recorder, web server and decoders too, without files.");
  text.Add(OwnBytesOfAll(getppid()));  // that of `recorderctl serve`
}

std::string Metrics(const Config& config) {
  const Counts& counts = SharedCounts();
  MetricsText text;
  AddCameras(text, config);
  AddWatch(text, config);
  AddRequests(text, counts);
  AddTimes(text, counts);
  AddKeyFrames(text, counts);
  text.Begin("recorder_logins_refused_total", "counter",
             "Requests that were refused for a wrong name, password, session or token, or in a pause after such.");
  text.Add(static_cast<double>(counts.refusedLogins));
  AddWorkers(text, counts);
  AddMemory(text);
  text.Begin("recorder_model_files", "gauge", "Model files that can be read.");
  text.Add(static_cast<double>(Models()->vendors.size()));
  text.Begin("recorder_build_info", "gauge", "The version that runs; the value is always 1.");
  text.Add(1, Label("version", PROJECT_VERSION));
  return text.Text();
}

}  // namespace

OwnAnswer AnswerMetrics(const Config& config) {
  OwnAnswer answer;
  answer.body = Metrics(config);
  answer.headers = "Content-Type: text/plain; version=0.0.4; charset=utf-8\r\nContent-Length: " +
                   std::to_string(answer.body.size()) + "\r\n";
  return answer;
}

}  // namespace recorder
