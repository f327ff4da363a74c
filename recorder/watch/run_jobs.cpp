#include "recorder/watch/run_jobs.h"

#include <algorithm>
#include <cstddef>
#include <string>
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

CheckJob TestOf(const RunRow& row) {
  CheckJob job{.method = kTestMethod, .params = TestParams(row.camera, row.password)};
  job.params["camVideoType"] = row.camera.codec;
  job.params["camStreamingType"] = row.camera.streamType;
  return job;
}

}  // namespace

bool IsTestedAlone(const RunCamera& row) {
  const std::string* const texts[] = {&row.channel, &row.sourcePath, &row.codec, &row.streamType};
  return std::ranges::any_of(texts, [](const std::string* text) { return !text->empty(); });
}

CheckJob JobOf(const std::vector<RunRow>& rows) {
  if (IsTestedAlone(rows.front().camera)) return TestOf(rows.front());
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
