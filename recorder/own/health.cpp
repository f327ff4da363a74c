#include "recorder/own/health.h"

#include <algorithm>
#include <exception>

#include "recorder/device/model/model_files.h"
#include "recorder/http/own_request.h"
#include "recorder/records/records.h"
#include "recorder/utility/counts.h"
#include "recorder/utility/log.h"

namespace recorder {

namespace {

std::string WhyNoRecords(const std::filesystem::path& stateFolder) {
  if (!Records::AreThere(stateFolder)) return "the records are not there";
  Records(stateFolder).HasKeys();  // throws what is wrong
  return "";
}

std::string WhyNoModels() { return Models()->vendors.empty() ? "no model file can be read" : ""; }

/// Nobody counts workers but "recorderctl serve".
std::string WhyNoWorker() {
  const PoolCount& workers = SharedCounts().cameraWorkers;
  const bool isServed = SharedCounts().logins.front().IsThere();
  if (!isServed || std::ranges::any_of(workers, &WorkerCount::IsFree)) return "";
  return std::ranges::any_of(workers, &WorkerCount::IsThere) ? "all workers are busy" : "no worker is there";
}

/// What strangers may not read goes to the log.
std::string WhyNot(const Condition& condition) try { return condition.whyNot(); } catch (const std::exception& error) {
  LogFailure(error.what());
  return "it cannot be read; the recorder's log says why";
}

}  // namespace

bool IsForWatchers(const std::string& path) { return path == "/healthz" || path == "/readyz" || path == "/metrics"; }

OwnAnswer Readiness(const std::vector<Condition>& conditions) {
  OwnAnswer answer = Success(Json::Value(Json::objectValue));
  for (const Condition& condition : conditions) {
    const std::string reason = WhyNot(condition);
    if (!reason.empty()) answer.status = 503;
    answer.json["data"][condition.name] = reason.empty() ? "ok" : reason;
  }
  if (answer.status == 200) return answer;
  const Json::Value data = answer.json["data"];
  answer.json = Failure(answer.status, "the recorder is not ready");
  answer.json["error"]["reasons"] = data;
  return answer;
}

OwnAnswer AnswerReady(const Config& config) {
  return Readiness({{"module", [] { return std::string(); }},
                    {"records", [&] { return WhyNoRecords(config.stateFolder); }},
                    {"models", &WhyNoModels},
                    {"workers", &WhyNoWorker}});
}

OwnAnswer AnswerAlive() { return Success("alive"); }

}  // namespace recorder
