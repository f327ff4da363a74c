#include <SQLiteCpp/Transaction.h>

#include <utility>

#include "recorder/records/runs.h"
#include "recorder/records/runs_file.h"
#include "recorder/utility/cause_table.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/text.h"

// How the rows of a run get on.

namespace recorder {
namespace {

/// A row that has a result needs no password any more.
constexpr char kSetResult[] =
    "UPDATE rows SET result = ?3, milliseconds = ?4, at = max(at, ?5), password = zeroblob(0) WHERE runId = ?1 AND "
    "number = ?2 AND result = ''";

/// The row that a query stands at, with its password; nothing where that cannot be opened.
std::optional<RunRow> RowIn(SQLite::Statement& query, int runId, const SecretKey& key) {
  const RunCamera camera = CameraIn(query);
  auto password = Unseal(key, ContextOf(runId, camera), query.getColumn(kRowColumnCount).getString());
  return password ? std::optional<RunRow>({camera, *std::move(password)}) : std::nullopt;
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

std::vector<RunCamera> Runs::Waiting(int id) const {
  return impl_->Guarded([&] {
    SQLite::Statement query{impl_->database, std::string("SELECT ") + kRowColumns +
                                                 " FROM rows WHERE runId = ? AND result = '' AND at = 0 ORDER BY "
                                                 "number"};
    query.bind(1, id);
    std::vector<RunCamera> rows;
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
    for (const int number : numbers) {
      if (auto row = impl_->Begin(id, number)) begun.push_back(*std::move(row));
    }
    impl_->EndIfDone(id);
    return begun;
  });
}

std::optional<RunRow> Runs::Impl::Begin(int id, int number) {
  SQLite::Statement query{database, std::string("SELECT ") + kRowColumns +
                                        ", password FROM rows WHERE runId = ? AND number = ? AND result = '' AND at = "
                                        "0"};
  SQLite::bind(query, id, number);
  if (!query.executeStep()) return std::nullopt;
  auto row = RowIn(query, id, key);
  if (row) {
    Run("UPDATE rows SET at = ? WHERE runId = ? AND number = ?", SecondsNow(), id, number);
  } else {
    Run(kSetResult, id, number, std::string(NameOf(Outcome::kRecorderFailed)), 0, SecondsNow());
  }
  return row;
}

void Runs::Impl::Finish(int id, const RowOutcome& outcome) {
  SQLite::Statement query{database, std::string("SELECT ") + kRowColumns +
                                        ", password FROM rows WHERE runId = ? AND number = ? AND result = ''"};
  SQLite::bind(query, id, outcome.number);
  if (!query.executeStep()) return;
  const std::string place = NormalizedHost(CameraIn(query).host);
  const std::string result{outcome.outcome ? NameOf(*outcome.outcome) : kUnknownResult};
  const bool mayLockOut = !outcome.outcome || MayBeRefusedLogin(outcome.outcome);
  if (mayLockOut && StateOf(id) == RunState::kStarted) {
    if (auto row = RowIn(query, id, key)) FinishAlike(id, *row, result);
  }
  Run(kSetResult, id, outcome.number, result, outcome.time.count(), 0);
  const bool isSilent = outcome.outcome == Outcome::kTimedOut;
  Run(isSilent ? "INSERT OR IGNORE INTO silentHosts VALUES (?)" : "DELETE FROM silentHosts WHERE place = ?", place);
}

void Runs::Impl::FinishAlike(int id, RunRow& row, const std::string& result) {
  const WipeAtEnd wipe(row.password);
  SQLite::Statement query{database, std::string("SELECT ") + kRowColumns +
                                        ", password FROM rows WHERE runId = ? AND place = ? AND port = ? AND user = ? "
                                        "AND result = '' AND at = 0"};
  SQLite::bind(query, id, NormalizedHost(row.camera.host), row.camera.port, row.camera.user);
  std::vector<int> alike;
  while (query.executeStep()) {
    auto other = RowIn(query, id, key);
    if (!other) continue;
    const WipeAtEnd wipeOther(other->password);
    if (other->password == row.password) alike.push_back(other->camera.id);
  }
  for (const int number : alike) Run(kSetResult, id, number, result, 0, SecondsNow());
}

void Runs::Finish(int id, const std::vector<RowOutcome>& outcomes) {
  const bool hasEnded = impl_->Changed([&] {
    for (const RowOutcome& outcome : outcomes) impl_->Finish(id, outcome);
    return impl_->EndIfDone(id);
  });
  if (hasEnded) impl_->EmptyLog();
}

}  // namespace recorder
