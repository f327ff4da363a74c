#pragma once

#include <filesystem>
#include <string>

#include "recorder/records/database_file.h"
#include "recorder/records/records.h"
#include "recorder/records/runs.h"
#include "recorder/utility/secrets.h"

namespace recorder {

/// The opened file of the runs, and the key of its passwords.
struct Runs::Impl : DatabaseFile {
  explicit Impl(const std::filesystem::path& stateFolder);

  /// Runs `action` as one change, whole or not at all.
  template <class Action>
  auto Changed(Action action) {
    return Guarded([&] {
      SQLite::Transaction transaction{database, SQLite::TransactionBehavior::IMMEDIATE};
      auto result = action();
      transaction.commit();
      return result;
    });
  }

  /// The same as RunStatement() with this database.
  template <class... Values>
  int Run(const char* text, const Values&... values) {
    return RunStatement(database, text, values...);
  }

  /// The number that a query begins with; 0 where it has no row.
  template <class... Values>
  std::int64_t Number(const char* text, const Values&... values) const {
    SQLite::Statement query{database, text};
    SQLite::bind(query, values...);
    return query.executeStep() ? query.getColumn(0).getInt64() : 0;
  }

  SQLite::Database Open(const std::filesystem::path& stateFolder) const;

  /// The state of a run; nothing where there is none.
  std::optional<RunState> StateOf(int id) const;
  void SetState(int id, RunState state);
  /// Wipes the passwords of a run whose rows wait no more, since it has this state now.
  void WipeWaiting(int id, RunState state);
  /// Ends a run of which nothing is left to do. False: it goes on, or has ended before.
  bool EndIfDone(int id);
  // Parts of Runs::Begin and Runs::Finish.
  std::optional<RunRow> Begin(int id, int number);
  void Finish(int id, const RowOutcome& outcome);
  void FinishAlike(int id, RunRow& row, const std::string& result);
  /// What is left of what was overwritten goes out of the write-ahead log, too.
  void EmptyLog();

  SecretKey key;
  mutable SQLite::Database database;
};

/// What the password of a row is sealed for.
std::string ContextOf(int runId, const CameraRecord& row);

/// The columns of a row, how many these are, and what reads them.
inline constexpr char kRowColumns[] =
    "number, name, vendor, model, host, port, user, channel, sourcePath, codec, streamType";
inline constexpr int kRowColumnCount = 11;
RunCamera CameraIn(SQLite::Statement& query);

}  // namespace recorder
