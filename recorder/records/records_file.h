#pragma once

#include <SQLiteCpp/SQLiteCpp.h>

#include <filesystem>

#include "recorder/records/records.h"
#include "recorder/utility/files.h"
#include "recorder/utility/secrets.h"

namespace recorder {

/// The opened file of the records, and the key that it is read with.
struct Records::Impl {
  /// Opens the records in `stateFolder` and makes what is missing.
  explicit Impl(const std::filesystem::path& stateFolder);

  /// Runs `action` and gives SQLite's failures the name of the file.
  template <class Action>
  auto Guarded(Action action) const {
    try {
      return action();
    } catch (const SQLite::Exception& error) {
      throw RecordsError(file.string() + ": " + error.what());
    }
  }

  SQLite::Database Open(const std::filesystem::path& stateFolder) const;

  void StorePassword(int id, const std::string& host, int port, const std::string& password);

  std::filesystem::path file;
  std::filesystem::path keyFile;
  FileStamp fileStamp;  // from before the files were opened, so that an exchange in between shows
  FileStamp keyStamp;
  SecretKey key;
  mutable SQLite::Database database;
  mutable SQLite::Statement versionQuery{database, "PRAGMA data_version"};  // https://www.sqlite.org/pragma.html
};

}  // namespace recorder
