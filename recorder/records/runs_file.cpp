#include "recorder/records/runs_file.h"

#include <SQLiteCpp/Transaction.h>

#include <iterator>

#include "recorder/utility/clock.h"
#include "recorder/utility/files.h"
#include "recorder/utility/state_files.h"

namespace recorder {
namespace fs = std::filesystem;
namespace {

// A row waits as long as it has neither `at` nor `result`, and is at hand as long as it has no result. `place` is its
// host in its normal form. AUTOINCREMENT: a client that still knows a forgotten run must not see another's.
constexpr char kFirst[] = R"(
CREATE TABLE runs (
  id INTEGER PRIMARY KEY AUTOINCREMENT, state INTEGER NOT NULL, owner TEXT NOT NULL,
  openedAt INTEGER NOT NULL, startedAt INTEGER NOT NULL, endedAt INTEGER NOT NULL, size INTEGER NOT NULL
) STRICT;
CREATE TABLE rows (
  runId INTEGER NOT NULL, number INTEGER NOT NULL,
  name TEXT NOT NULL, vendor TEXT NOT NULL, model TEXT NOT NULL, host TEXT NOT NULL, port INTEGER NOT NULL,
  user TEXT NOT NULL, channel TEXT NOT NULL, sourcePath TEXT NOT NULL, password BLOB NOT NULL, place TEXT NOT NULL,
  at INTEGER NOT NULL DEFAULT 0, result TEXT NOT NULL DEFAULT '', milliseconds INTEGER NOT NULL DEFAULT 0,
  PRIMARY KEY (runId, number)
) STRICT, WITHOUT ROWID;
CREATE INDEX rowsByResult ON rows (runId, result, at);
CREATE INDEX rowsByPlace ON rows (runId, place);
CREATE TABLE silentHosts (place TEXT PRIMARY KEY) STRICT, WITHOUT ROWID;
CREATE TRIGGER forgetRows AFTER DELETE ON runs
  BEGIN DELETE FROM rows WHERE runId = OLD.id; END;
)";

constexpr char kSecond[] = R"(
ALTER TABLE rows ADD COLUMN codec TEXT NOT NULL DEFAULT '';
ALTER TABLE rows ADD COLUMN streamType TEXT NOT NULL DEFAULT '';
)";

/// From each version of the file to the next one.
constexpr const char* kRunsSteps[] = {kFirst, kSecond};
constexpr int kRunsSchema = std::size(kRunsSteps);

fs::path RunsFileIn(const fs::path& stateFolder) { return stateFolder / kRunsFile; }

/// Whoever comes next makes again what somebody left half made.
void MakeSchema(SQLite::Database& database, const fs::path& file) {
  const int version = database.execAndGet("PRAGMA user_version").getInt();
  if (version > kRunsSchema) throw RecordsError(file.string() + ": is a newer program's; use that");
  if (version == kRunsSchema) return;
  database.exec("PRAGMA journal_mode = WAL");
  SQLite::Transaction transaction{database, SQLite::TransactionBehavior::IMMEDIATE};
  for (int step = version; step < kRunsSchema; ++step) database.exec(kRunsSteps[step]);
  database.exec("PRAGMA user_version = " + std::to_string(kRunsSchema));
  transaction.commit();
}

}  // namespace

bool Runs::AreThere(const fs::path& stateFolder) {
  std::error_code ignored;
  return fs::exists(RunsFileIn(stateFolder), ignored);
}

Runs::Runs(const fs::path& stateFolder) {
  MakePrivateFolder(stateFolder);
  impl_ = std::make_unique<Impl>(stateFolder);
  Expire(SecondsNow());
}

Runs::~Runs() = default;

Runs::Impl::Impl(const fs::path& stateFolder)
    : DatabaseFile{RunsFileIn(stateFolder)}, key(LoadOrMakeKey(stateFolder / kKeyFile)), database(Open(stateFolder)) {}

SQLite::Database Runs::Impl::Open(const fs::path& stateFolder) const {
  if (!fs::exists(file)) CreateFileOnce(file, "");
  return Guarded([&] {
    SQLite::Database opened{file.string(), SQLite::OPEN_READWRITE, kBusyTimeoutMs};
    {
      const FileDescriptor lock = LockFolder(stateFolder);
      MakeSchema(opened, file);
    }
    opened.exec("PRAGMA synchronous = FULL");
    opened.exec("PRAGMA secure_delete = ON");
    return opened;
  });
}

std::optional<RunState> Runs::Impl::StateOf(int id) const {
  SQLite::Statement query{database, "SELECT state FROM runs WHERE id = ?"};
  query.bind(1, id);
  return query.executeStep() ? std::optional(static_cast<RunState>(query.getColumn(0).getInt())) : std::nullopt;
}

std::string ContextOf(int runId, const CameraRecord& row) {
  return "run " + std::to_string(runId) + ' ' + std::to_string(row.id) + ' ' + std::to_string(row.port) + ' ' +
         row.host;
}

RunCamera CameraIn(SQLite::Statement& query) {
  RunCamera row;
  int column = 0;
  row.id = query.getColumn(column++).getInt();
  for (std::string* text : {&row.name, &row.vendor, &row.model, &row.host}) {
    *text = query.getColumn(column++).getString();
  }
  row.port = query.getColumn(column++).getInt();
  for (std::string* text : {&row.user, &row.channel, &row.sourcePath, &row.codec, &row.streamType}) {
    *text = query.getColumn(column++).getString();
  }
  return row;
}

}  // namespace recorder
