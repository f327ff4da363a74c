#include "recorder/watch/knock_work.h"

#include <string>
#include <utility>

#include "recorder/net/knock.h"

namespace recorder {
namespace {

constexpr char kKnockMethod[] = "knock";  // no name of a method of the module begins in lower case

CheckAnswer Knocked(const CheckJob& job) {
  std::vector<KnockPlace> places;
  for (const Json::Value& place : job.params["places"]) {
    places.push_back({place["host"].asString(), place["port"].asInt()});
  }
  CheckAnswer answer{.kind = CheckAnswer::Kind::kAnswered};
  for (const Outcome outcome : KnockAtEach(places)) {
    answer.causes.append(answer.causes.empty() ? "" : ", ").append(NameOf(outcome));
  }
  return answer;
}

}  // namespace

CheckJob KnockJobOf(const std::vector<PlannedRow>& rows) {
  CheckJob job{.method = kKnockMethod};
  for (const PlannedRow& row : rows) {
    Json::Value& place = job.params["places"].append(Json::objectValue);
    place["host"] = row.host;
    place["port"] = row.port;
  }
  return job;
}

CheckWork KnockOr(CheckWork other) {
  return [other = std::move(other)](const CheckJob& job) {
    return job.method == kKnockMethod ? Knocked(job) : other(job);
  };
}

}  // namespace recorder
