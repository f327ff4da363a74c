#include "recorder/records/runs.h"

#include <SQLiteCpp/Transaction.h>

#include "recorder/records/records_file.h"
#include "recorder/records/runs_file.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

constexpr char kSelectRuns[] = "SELECT id, state, owner, openedAt, startedAt, endedAt, size FROM runs ";

Run RunOf(SQLite::Statement& query) {
  return {.id = query.getColumn(0).getInt(),
          .state = static_cast<RunState>(query.getColumn(1).getInt()),
          .owner = query.getColumn(2).getString(),
          .openedAt = query.getColumn(3).getInt64(),
          .startedAt = query.getColumn(4).getInt64(),
          .endedAt = query.getColumn(5).getInt64(),
          .rows = query.getColumn(6).getInt(),
          .results = {}};
}

/// Counts the rows of a run.
void Count(const SQLite::Database& database, Run& run) {
  SQLite::Statement query{database, "SELECT result, at > 0, count(*) FROM rows WHERE runId = ? GROUP BY 1, 2"};
  query.bind(1, run.id);
  while (query.executeStep()) {
    const std::string result = query.getColumn(0).getString();
    const int count = query.getColumn(2).getInt();
    if (!result.empty()) run.results[result] += count;
    if (result.empty() && query.getColumn(1).getInt() != 0) run.atHand = count;
  }
}

/// Adds one row, with its password, by the statement of all.
void Insert(SQLite::Statement& insert, int runId, const RunCamera& row, const std::string& sealed) {
  insert.reset();
  SQLite::bind(insert, runId, row.id, row.name, row.vendor, row.model, row.host, row.port, row.user, row.channel,
               row.sourcePath, row.codec, row.streamType, NormalizedHost(row.host));
  BindBlob(insert, kRowColumnCount + 3, sealed);
  insert.exec();
}

}  // namespace

std::string_view NameOf(RunState state) {
  constexpr std::string_view kNames[] = {"open", "started", "ended", "cancelled", "expired"};
  return kNames[static_cast<std::size_t>(state)];
}

std::optional<int> Runs::Open(const std::string& owner) {
  return impl_->Changed([&]() -> std::optional<int> {
    if (impl_->Number("SELECT count(*) FROM runs") >= kMostRuns) return std::nullopt;
    impl_->Run("INSERT INTO runs (state, owner, openedAt, startedAt, endedAt, size) VALUES (0, ?, ?, 0, 0, 0)", owner,
               SecondsNow());
    return static_cast<int>(impl_->database.getLastInsertRowid());
  });
}

RunChange Runs::Add(int id, const std::vector<RunRow>& rows, std::optional<int> after) {
  return impl_->Changed([&] {
    const auto state = impl_->StateOf(id);
    if (!state) return RunChange::kNoRun;
    if (*state != RunState::kOpen) return RunChange::kNotOpen;
    const int before = static_cast<int>(impl_->Number("SELECT size FROM runs WHERE id = ?", id));
    if (after && *after != before) return RunChange::kOtherCount;
    const int size = before + static_cast<int>(rows.size());
    if (size > kMostRunRows) return RunChange::kTooMany;
    SQLite::Statement insert{impl_->database,
                             std::string("INSERT INTO rows (runId, ") + kRowColumns +
                                 ", place, password) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"};
    for (int number = before + 1; number <= size; ++number) {
      RunCamera row = rows[static_cast<std::size_t>(number - before - 1)].camera;
      row.id = number;
      const std::string& password = rows[static_cast<std::size_t>(number - before - 1)].password;
      Insert(insert, id, row, Seal(impl_->key, ContextOf(id, row), password));
    }
    impl_->Run("UPDATE runs SET size = ? WHERE id = ?", size, id);
    return RunChange::kDone;
  });
}

RunChange Runs::Start(int id) {
  return impl_->Changed([&] {
    const auto state = impl_->StateOf(id);
    if (!state) return RunChange::kNoRun;
    if (*state != RunState::kOpen) return RunChange::kNotOpen;
    const int started = impl_->Run("UPDATE runs SET state = ?, startedAt = ? WHERE id = ? AND size > 0",
                                   static_cast<int>(RunState::kStarted), SecondsNow(), id);
    return started == 1 ? RunChange::kDone : RunChange::kNoRows;
  });
}

RunChange Runs::Cancel(int id) {
  const RunChange change = impl_->Changed([&] {
    const auto state = impl_->StateOf(id);
    if (!state) return RunChange::kNoRun;
    if (*state == RunState::kOpen || *state == RunState::kStarted) {
      impl_->WipeWaiting(id, RunState::kCancelled);
    } else {
      impl_->Run("DELETE FROM runs WHERE id = ?", id);
    }
    return RunChange::kDone;
  });
  impl_->EmptyLog();
  return change;
}

std::optional<Run> Runs::Find(int id) const {
  return impl_->Guarded([&]() -> std::optional<Run> {
    SQLite::Statement query{impl_->database, std::string(kSelectRuns) + "WHERE id = ?"};
    query.bind(1, id);
    if (!query.executeStep()) return std::nullopt;
    Run run = RunOf(query);
    Count(impl_->database, run);
    return run;
  });
}

std::vector<Run> Runs::List() const {
  return impl_->Guarded([&] {
    SQLite::Statement query{impl_->database, std::string(kSelectRuns) + "ORDER BY id"};
    std::vector<Run> runs;
    while (query.executeStep()) runs.push_back(RunOf(query));
    for (Run& run : runs) Count(impl_->database, run);
    return runs;
  });
}

std::vector<RunResult> Runs::Results(int id, int after, int most) const {
  return impl_->Guarded([&] {
    SQLite::Statement query{impl_->database, std::string("SELECT ") + kRowColumns +
                                                 ", result, at, milliseconds FROM rows WHERE runId = ? AND number > ? "
                                                 "ORDER BY number LIMIT ?"};
    SQLite::bind(query, id, after, most);
    std::vector<RunResult> results;
    while (query.executeStep()) {
      RunResult result{.camera = CameraIn(query), .result = query.getColumn(kRowColumnCount).getString()};
      result.at = query.getColumn(kRowColumnCount + 1).getInt64();
      result.isAtHand = result.at != 0 && result.result.empty();
      result.time = std::chrono::milliseconds(query.getColumn(kRowColumnCount + 2).getInt64());
      results.push_back(std::move(result));
    }
    return results;
  });
}

}  // namespace recorder
