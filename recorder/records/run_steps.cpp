#include <SQLiteCpp/Transaction.h>

#include <utility>

#include "recorder/records/runs.h"
#include "recorder/records/runs_file.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/text.h"

// How the rows of a run get on.

namespace recorder {
namespace {

/// A row that has a result needs no password any more.
constexpr char kSetResult[] =
    "UPDATE rows SET result = ?3, milliseconds = ?4, at = max(at, ?5), password = zeroblob(0) WHERE runId = ?1 AND "
    "number = ?2 AND result = ''";

/// The rows, with their passwords, that a query finds.
std::vector<RunRow> RowsOf(SQLite::Statement& query, int runId, const SecretKey& key) {
  std::vector<RunRow> rows;
  while (query.executeStep()) {
    RunRow row{.camera = CameraIn(query), .password = {}};
    auto password = Unseal(key, ContextOf(runId, row.camera), query.getColumn(9).getString());
    if (password) row.password = std::move(*password);
    rows.push_back(std::move(row));
  }
  return rows;
}

}  // namespace

void WipePasswords(std::vector<RunRow>& rows) {
  for (RunRow& row : rows) Wipe(row.password);
}

void Runs::Impl::SetState(int id, RunState state) {
  Run("UPDATE runs SET state = ?, endedAt = ? WHERE id = ?", static_cast<int>(state), SecondsNow(), id);
}

void Runs::Impl::WipeWaiting(int id, RunState state) {
  Run("UPDATE rows SET password = zeroblob(0) WHERE runId = ? AND result = ''", id);
  SetState(id, state);
}

void Runs::Impl::EmptyLog() {
  Guarded([&] { database.tryExec("PRAGMA wal_checkpoint(TRUNCATE)"); });
}

bool Runs::Impl::EndIfDone(int id) {
  if (StateOf(id) != RunState::kStarted) return false;
  if (Number("SELECT EXISTS (SELECT 1 FROM rows WHERE runId = ? AND result = '')", id) != 0) return false;
  SetState(id, RunState::kEnded);
  return true;
}

void Runs::Recover() {
  const bool isChanged = impl_->Changed([&] {
    SQLite::Statement atHand{impl_->database, "SELECT runId, number FROM rows WHERE result = '' AND at > 0"};
    std::vector<std::pair<int, int>> rows;
    while (atHand.executeStep()) rows.emplace_back(atHand.getColumn(0).getInt(), atHand.getColumn(1).getInt());
    for (const auto& [run, number] : rows) impl_->Finish(run, {.number = number});
    for (const auto& [run, number] : rows) impl_->EndIfDone(run);
    return !rows.empty();
  });
  if (isChanged) impl_->EmptyLog();
}

void Runs::Expire(std::int64_t now) {
  const std::int64_t wiped = now - std::chrono::seconds(kRunPasswordsKept).count();
  const std::int64_t forgotten = now - std::chrono::seconds(kRunsKept).count();
  const auto isAny = [&] {
    return impl_->Number(
               "SELECT EXISTS (SELECT 1 FROM runs WHERE state < 2 AND openedAt < ? OR endedAt BETWEEN 1 AND ?)", wiped,
               forgotten) != 0;
  };
  if (!impl_->Guarded(isAny)) return;  // without a lock, which others would wait for
  impl_->Changed([&] {
    SQLite::Statement old{impl_->database, "SELECT id FROM runs WHERE state < 2 AND openedAt < ?"};
    old.bind(1, wiped);
    std::vector<int> ids;
    while (old.executeStep()) ids.push_back(old.getColumn(0).getInt());
    for (const int id : ids) impl_->WipeWaiting(id, RunState::kExpired);
    return impl_->Run("DELETE FROM runs WHERE endedAt BETWEEN 1 AND ?", forgotten);
  });
  impl_->EmptyLog();
}

std::optional<int> Runs::FindStarted() const {
  const auto id = impl_->Guarded([&] { return impl_->Number("SELECT min(id) FROM runs WHERE state = 1"); });
  return id == 0 ? std::nullopt : std::optional(static_cast<int>(id));
}

std::vector<CameraRecord> Runs::Waiting(int id) const {
  return impl_->Guarded([&] {
    SQLite::Statement query{impl_->database, std::string("SELECT ") + kRowColumns +
                                                 " FROM rows WHERE runId = ? AND result = '' AND at = 0 ORDER BY "
                                                 "number"};
    query.bind(1, id);
    std::vector<CameraRecord> rows;
    while (query.executeStep()) rows.push_back(CameraIn(query));
    return rows;
  });
}

std::set<std::string> Runs::SilentHosts() const {
  return impl_->Guarded([&] {
    SQLite::Statement query{impl_->database, "SELECT place FROM silentHosts"};
    std::set<std::string> hosts;
    while (query.executeStep()) hosts.insert(query.getColumn(0).getString());
    return hosts;
  });
}

std::optional<std::vector<RunRow>> Runs::Begin(int id, const std::vector<int>& numbers) {
  return impl_->Changed([&]() -> std::optional<std::vector<RunRow>> {
    if (impl_->StateOf(id) != RunState::kStarted) return std::nullopt;
    std::vector<RunRow> begun;
    SQLite::Statement query{impl_->database, std::string("SELECT ") + kRowColumns +
                                                 ", password FROM rows WHERE runId = ? AND number = ? AND result = '' "
                                                 "AND at = 0"};
    for (const int number : numbers) {
      query.reset();
      SQLite::bind(query, id, number);
      for (RunRow& row : RowsOf(query, id, impl_->key)) begun.push_back(std::move(row));
      impl_->Run("UPDATE rows SET at = ? WHERE runId = ? AND number = ? AND result = '' AND at = 0", SecondsNow(), id,
                 number);
    }
    return begun;
  });
}

void Runs::Impl::Finish(int id, const RowOutcome& outcome) {
  SQLite::Statement query{database, std::string("SELECT ") + kRowColumns +
                                        ", password FROM rows WHERE runId = ? AND number = ? AND result = ''"};
  SQLite::bind(query, id, outcome.number);
  std::vector<RunRow> rows = RowsOf(query, id, key);
  if (rows.empty()) return;
  const std::string result{outcome.outcome ? NameOf(*outcome.outcome) : kUnknownResult};
  const bool mayLockOut = !outcome.outcome || *outcome.outcome == Outcome::kLoginRefused;
  if (mayLockOut && StateOf(id) == RunState::kStarted) FinishAlike(id, rows.front(), result);
  WipePasswords(rows);
  Run(kSetResult, id, outcome.number, result, outcome.time.count(), 0);
  const bool isSilent = outcome.outcome == Outcome::kTimedOut;
  Run(isSilent ? "INSERT OR IGNORE INTO silentHosts VALUES (?)" : "DELETE FROM silentHosts WHERE place = ?",
      NormalizedHost(rows.front().camera.host));
}

void Runs::Impl::FinishAlike(int id, const RunRow& row, const std::string& result) {
  SQLite::Statement query{database, std::string("SELECT ") + kRowColumns +
                                        ", password FROM rows WHERE runId = ? AND place = ? AND user = ? AND result = "
                                        "'' AND at = 0"};
  SQLite::bind(query, id, NormalizedHost(row.camera.host), row.camera.user);
  std::vector<RunRow> others = RowsOf(query, id, key);
  for (const RunRow& other : others) {
    if (other.password == row.password) Run(kSetResult, id, other.camera.id, result, 0, SecondsNow());
  }
  WipePasswords(others);
}

void Runs::Finish(int id, const std::vector<RowOutcome>& outcomes) {
  const bool hasEnded = impl_->Changed([&] {
    for (const RowOutcome& outcome : outcomes) impl_->Finish(id, outcome);
    return impl_->EndIfDone(id);
  });
  if (hasEnded) impl_->EmptyLog();
}

}  // namespace recorder
