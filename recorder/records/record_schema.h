#pragma once

#include <SQLiteCpp/Database.h>

namespace recorder {

/// The version of the records' file that this program writes.
int NewestSchema();

/// The version of an open file; 0: it is new and empty.
int SchemaOf(SQLite::Database& database);

/// True when it holds the tables, indexes and triggers of its version and none besides: what was put in by somebody
/// else could change what a statement does. False for a new file, and for a version that is not known.
bool HasOwnSchema(SQLite::Database& database);

/// Leads a file of an older version, or a new one, to the newest, all or nothing. Its caller keeps other processes from
/// doing the same at once. Throws SQLite::Exception.
void UpdateSchema(SQLite::Database& database);

}  // namespace recorder
