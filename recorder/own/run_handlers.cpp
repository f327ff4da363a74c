#include <optional>
#include <string>
#include <vector>

#include "recorder/own/handlers.h"
#include "recorder/own/run_json.h"
#include "recorder/own/run_rows.h"
#include "recorder/own/typed_members.h"
#include "recorder/utility/config.h"
#include "recorder/utility/service.h"
#include "recorder/utility/text.h"

namespace recorder {

namespace {

HttpError NoSuchRun() { return {404, "there is no such run"}; }

int RunIn(const OwnRequest& request) {
  const auto id = ParseNumber<int>(request.name);
  if (!id) throw NoSuchRun();
  return *id;
}

void Require(RunChange change) {
  switch (change) {
    case RunChange::kDone:
      return;
    case RunChange::kNoRun:
      throw NoSuchRun();
    case RunChange::kNotOpen:
      throw HttpError(409, "the run was started or cancelled before");
    case RunChange::kOtherCount:
      throw HttpError(409, "the run has another number of rows: read it").With("member", "after");
    case RunChange::kTooMany:
      throw HttpError(409, "a run has at most " + std::to_string(kMostRunRows) + " rows");
    case RunChange::kNoRows:
      throw HttpError(409, "the run has no rows");
  }
}

Run Find(const Runs& runs, int id) {
  auto run = runs.Find(id);
  if (!run) throw NoSuchRun();
  return *std::move(run);
}

bool HasTester() { return IsServiceRunning(GetConfig().stateFolder, Service::kWatch); }

OwnAnswer Shown(const Runs& runs, int id, int status = 200) {
  OwnAnswer answer = Success(RunJson(Find(runs, id), HasTester()));
  answer.status = status;
  return answer;
}

std::optional<int> CountBefore(const Json::Value& body) {
  if (!body.isMember("after")) return std::nullopt;
  int after = 0;
  SetNumber(body, "after", 0, kMostRunRows, after);
  return after;
}

/// Rows that are added, whose passwords end with them.
struct SentRows {
  std::vector<RunRow> rows;

  SentRows() = default;
  SentRows(const SentRows&) = delete;
  SentRows& operator=(const SentRows&) = delete;
  ~SentRows() { WipePasswords(rows); }
};

}  // namespace

OwnAnswer ListRuns(const OwnRequest& /*request*/, OwnTools& /*tools*/) {
  Json::Value list(Json::arrayValue);
  const bool hasTester = HasTester();
  for (const Run& run : Runs(GetConfig().stateFolder).List()) list.append(RunJson(run, hasTester));
  return Success(list);
}

OwnAnswer OpenRun(const OwnRequest& request, OwnTools& /*tools*/) {
  Runs runs(GetConfig().stateFolder);
  const auto id = runs.Open(request.caller->user);
  if (id) return Shown(runs, *id, 201);
  throw HttpError(409, "there are " + std::to_string(kMostRuns) + " runs: delete one of them");
}

OwnAnswer ShowRun(const OwnRequest& request, OwnTools& /*tools*/) {
  return Shown(Runs(GetConfig().stateFolder), RunIn(request));
}

OwnAnswer CancelRun(const OwnRequest& request, OwnTools& /*tools*/) {
  Runs runs(GetConfig().stateFolder);
  const int id = RunIn(request);
  Require(runs.Cancel(id));
  const auto left = runs.Find(id);
  return Success(left ? RunJson(*left, HasTester()) : Json::Value());
}

OwnAnswer AddRows(const OwnRequest& request, OwnTools& /*tools*/) {
  constexpr std::string_view kMembers[] = {"rows", "after"};
  RefuseOtherMembers(request.params, kMembers, "");
  SentRows sent;
  ReadRows(request.params["rows"], sent.rows);
  Runs runs(GetConfig().stateFolder);
  const int id = RunIn(request);
  Require(runs.Add(id, sent.rows, CountBefore(request.params)));
  return Shown(runs, id);
}

OwnAnswer ListRows(const OwnRequest& request, OwnTools& /*tools*/) {
  const int after = NumberOf(request, "after", 0, kMostRunRows, 0);
  const int most = NumberOf(request, "limit", 1, kMostRowsAtOnce, kMostRowsAtOnce);
  const Runs runs(GetConfig().stateFolder);
  const Run run = Find(runs, RunIn(request));
  Json::Value data(Json::objectValue);
  Json::Value& rows = data["rows"] = Json::Value(Json::arrayValue);
  for (const RunResult& row : runs.Results(run.id, after, most)) rows.append(RowJson(row));
  const int last = rows.empty() ? after : rows[rows.size() - 1]["number"].asInt();
  data["next"] = last < run.rows && !rows.empty() ? Json::Value(last) : Json::Value();
  return Success(data);
}

OwnAnswer StartRun(const OwnRequest& request, OwnTools& /*tools*/) {
  if (!HasTester()) {
    throw HttpError(503, "recorder-watch does not run, which would test the rows", "Retry-After: 1\r\n")
        .With("reason", "noTester");
  }
  Runs runs(GetConfig().stateFolder);
  const int id = RunIn(request);
  Require(runs.Start(id));
  return Shown(runs, id);
}

}  // namespace recorder
