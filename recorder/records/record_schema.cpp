#include "recorder/records/record_schema.h"

#include <SQLiteCpp/Transaction.h>

#include <iterator>
#include <set>
#include <string>

namespace recorder {
namespace {

/// What leads from the version before to this one.
struct SchemaStep {
  int version;
  const char* statements;
};

// A step that was released stays as it is: files of its version are in use.
constexpr SchemaStep kSteps[] = {
    // AUTOINCREMENT: a client that still knows a removed camera's id must not be lent another camera's password.
    {1, R"(
CREATE TABLE cameras (
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  name TEXT NOT NULL, vendor TEXT NOT NULL, model TEXT NOT NULL,
  host TEXT NOT NULL, port INTEGER NOT NULL, user TEXT NOT NULL, password BLOB NOT NULL,
  channel TEXT NOT NULL, sourcePath TEXT NOT NULL, status INTEGER NOT NULL, ownerKdId INTEGER NOT NULL
) STRICT;
CREATE TABLE trustedKeys (
  kind INTEGER NOT NULL, name TEXT NOT NULL, key BLOB NOT NULL, PRIMARY KEY (kind, name)
) STRICT;
)"},
    {2, "ALTER TABLE cameras ADD COLUMN strongestLogin INTEGER NOT NULL DEFAULT 0"},
    {3, R"(
CREATE TABLE certificates (
  cameraId INTEGER NOT NULL, port INTEGER NOT NULL, sha256 TEXT NOT NULL, PRIMARY KEY (cameraId, port)
) STRICT;
CREATE TRIGGER forgetCertificates AFTER DELETE ON cameras
  BEGIN DELETE FROM certificates WHERE cameraId = OLD.id; END;
)"},
    // Whoever sets a password says anew which camera is there.
    {4, R"(
CREATE TABLE identities (
  cameraId INTEGER PRIMARY KEY, endpoint TEXT NOT NULL, serial TEXT NOT NULL
) STRICT;
CREATE TRIGGER forgetIdentity AFTER DELETE ON cameras
  BEGIN DELETE FROM identities WHERE cameraId = OLD.id; END;
CREATE TRIGGER learnAnew AFTER UPDATE OF password ON cameras
  BEGIN DELETE FROM identities WHERE cameraId = OLD.id; END;
)"},
    // The index makes it cheap to see, whenever the file is opened, that no removed camera is past its time.
    {5, R"(
ALTER TABLE cameras ADD COLUMN revision INTEGER NOT NULL DEFAULT 1;
ALTER TABLE cameras ADD COLUMN removedAt INTEGER;
CREATE INDEX removedCameras ON cameras (removedAt) WHERE removedAt IS NOT NULL;
CREATE TABLE streams (
  cameraId INTEGER NOT NULL, name TEXT NOT NULL, address TEXT NOT NULL,
  vendor TEXT NOT NULL, model TEXT NOT NULL, port INTEGER NOT NULL, channel TEXT NOT NULL, sourcePath TEXT NOT NULL,
  PRIMARY KEY (cameraId, name)
) STRICT;
CREATE TABLE facts (
  cameraId INTEGER NOT NULL, stream TEXT NOT NULL, name TEXT NOT NULL, value TEXT NOT NULL, source TEXT NOT NULL,
  at INTEGER NOT NULL, PRIMARY KEY (cameraId, stream, name, source)
) STRICT;
CREATE TABLE outcomes (
  cameraId INTEGER PRIMARY KEY, cause TEXT NOT NULL, since INTEGER NOT NULL, lastSuccess INTEGER NOT NULL
) STRICT;
CREATE TRIGGER forgetExtras AFTER DELETE ON cameras BEGIN
  DELETE FROM streams WHERE cameraId = OLD.id;
  DELETE FROM facts WHERE cameraId = OLD.id;
  DELETE FROM outcomes WHERE cameraId = OLD.id;
END;
)"},
    // AUTOINCREMENT: whoever was told of all events up to one must not miss a new one of the same id.
    {6, R"(
CREATE TABLE events (
  id INTEGER PRIMARY KEY AUTOINCREMENT, cameraId INTEGER NOT NULL, at INTEGER NOT NULL,
  cause TEXT NOT NULL, causeBefore TEXT NOT NULL
) STRICT;
CREATE INDEX eventsOfCamera ON events (cameraId, id);
CREATE INDEX eventsByTime ON events (at);
CREATE TRIGGER forgetEvents AFTER DELETE ON cameras
  BEGIN DELETE FROM events WHERE cameraId = OLD.id; END;
)"},
    // There is one at most.
    {7, R"(
CREATE TABLE webhook (
  id INTEGER PRIMARY KEY CHECK (id = 1), url TEXT NOT NULL, secret BLOB NOT NULL, revision INTEGER NOT NULL,
  toldEvent INTEGER NOT NULL, toldSteady INTEGER NOT NULL, triedAt INTEGER NOT NULL, result TEXT NOT NULL
) STRICT;
)"},
};

/// The steps that lead from one version to another.
void TakeSteps(SQLite::Database& database, int from, int to) {
  for (const SchemaStep& step : kSteps) {
    if (step.version > from && step.version <= to) database.exec(step.statements);
  }
}

/// But for what SQLite makes by itself, whose names nobody else may use.
std::set<std::string> StatementsIn(SQLite::Database& database) {
  std::set<std::string> statements;
  SQLite::Statement query{database, "SELECT sql FROM sqlite_master WHERE name NOT LIKE 'sqlite\\_%' ESCAPE '\\'"};
  while (query.executeStep()) statements.insert(query.getColumn(0).getString());
  return statements;
}

}  // namespace

int NewestSchema() { return std::rbegin(kSteps)->version; }

int SchemaOf(SQLite::Database& database) { return database.execAndGet("PRAGMA user_version").getInt(); }

bool HasOwnSchema(SQLite::Database& database) {
  const int version = SchemaOf(database);
  if (version < 1 || version > NewestSchema()) return false;
  SQLite::Database made{":memory:", SQLite::OPEN_READWRITE};
  TakeSteps(made, 0, version);
  return StatementsIn(database) == StatementsIn(made);
}

void UpdateSchema(SQLite::Database& database) {
  const int version = SchemaOf(database);
  if (version == NewestSchema()) return;
  if (version == 0) database.exec("PRAGMA journal_mode = WAL");
  SQLite::Transaction transaction{database, SQLite::TransactionBehavior::IMMEDIATE};
  TakeSteps(database, version, NewestSchema());
  database.exec("PRAGMA user_version = " + std::to_string(NewestSchema()));
  transaction.commit();
}

}  // namespace recorder
