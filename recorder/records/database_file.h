#pragma once

#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>

#include <filesystem>

#include "recorder/records/records.h"

namespace recorder {

/// How long a writer of one of the files waits for another one.
inline constexpr int kBusyTimeoutMs = 5000;

/// What both files of the records have: a name, which goes with whatever fails there.
struct DatabaseFile {
  /// Runs `action` and gives SQLite's failures the name of the file.
  template <class Action>
  auto Guarded(Action action) const {
    try {
      return action();
    } catch (const SQLite::Exception& error) {
      throw RecordsError(file.string() + ": " + error.what());
    }
  }

  std::filesystem::path file;
};

/// Runs one statement with these values for its "?", and returns how many rows it changed.
template <class... Values>
int RunStatement(SQLite::Database& database, const char* text, const Values&... values) {
  SQLite::Statement statement{database, text};
  SQLite::bind(statement, values...);
  return statement.exec();
}

}  // namespace recorder
