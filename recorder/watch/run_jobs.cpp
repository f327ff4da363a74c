#include "recorder/watch/run_jobs.h"

#include <cstddef>
#include <string_view>

#include "recorder/host/stored_call.h"
#include "recorder/utility/cause_table.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

constexpr char kListMethod[] = "CamBatAddVerify";

Json::Value ListEntry(const RunRow& row) {
  const CameraRecord& camera = row.camera;
  Json::Value entry(Json::objectValue);
  entry["tmpId"] = std::to_string(camera.id);
  entry["name"] = camera.name;
  entry["ip"] = camera.host;
  entry["port"] = camera.port;
  entry["username"] = camera.user;
  entry["password"] = row.password;
  entry["vendor"] = camera.vendor;
  entry["model"] = camera.model;
  return entry;
}

}  // namespace

bool IsTestedAlone(const CameraRecord& row) { return !row.channel.empty() || !row.sourcePath.empty(); }

CheckJob JobOf(const std::vector<RunRow>& rows) {
  if (IsTestedAlone(rows.front().camera))
    return {.method = kTestMethod, .params = TestParams(rows.front().camera, rows.front().password)};
  CheckJob job{.method = kListMethod};
  for (const RunRow& row : rows) job.params["camList"].append(ListEntry(row));
  return job;
}

std::vector<RowOutcome> OutcomesOf(const std::vector<int>& numbers, const CheckAnswer& answer) {
  std::vector<std::string_view> causes;
  if (answer.kind == CheckAnswer::Kind::kAnswered) causes = Split(answer.causes, ',');
  std::vector<RowOutcome> outcomes;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    RowOutcome outcome{.number = numbers[i]};
    if (causes.size() == numbers.size()) outcome.outcome = OutcomeNamed(Trimmed(causes[i]));
    if (numbers.size() == 1) outcome.time = answer.time;  // that of several is their slowest's
    outcomes.push_back(outcome);
  }
  return outcomes;
}

}  // namespace recorder
