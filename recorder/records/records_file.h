#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "recorder/records/database_file.h"
#include "recorder/records/records.h"
#include "recorder/utility/files.h"
#include "recorder/utility/secrets.h"

namespace recorder {

/// The opened file of the records, and the key that it is read with.
struct Records::Impl : DatabaseFile {
  /// Opens the records in `stateFolder` and makes what is missing.
  explicit Impl(const std::filesystem::path& stateFolder);

  SQLite::Database Open(const std::filesystem::path& stateFolder) const;

  /// The same as RunStatement() with this database.
  template <class... Values>
  int Run(const char* text, const Values&... values) {
    return RunStatement(database, text, values...);
  }

  // The following are parts of a change, within its transaction. Of a mistake in what they store they throw
  // RecordsError.
  void StoreRecord(const CameraRecord& camera);
  void StorePassword(const CameraRecord& camera, const std::string& password);
  void StoreStreams(int id, const std::vector<CameraStream>& streams);
  void StoreFacts(int id, const std::vector<CameraFact>& facts);
  /// What was known of the camera as it was `before` `change`, see Records::Change.
  void ForgetOutdated(const CameraRecord& before, const CameraRecord& after, const CameraChange& change);
  /// That it worked before it was switched off is not how long it has worked once it is switched on.
  void BeginAnew(const CameraRecord& before, const CameraRecord& after);
  void ForgetFactsOfOthers(int id, const std::vector<CameraStream>& streams);
  /// All refusals of the camera's login, at whatever record.
  void ForgetRefusals(const CameraRecord& camera);
  std::vector<RefusedCamera> RefusedCameras() const;
  /// That contact with the camera comes to something else now, which has this name.
  void StoreChange(int id, const CameraContact& contact, const std::string& name);

  std::filesystem::path keyFile;
  FileStamp fileStamp;  // from before the files were opened, so that an exchange in between shows
  FileStamp keyStamp;
  SecretKey key;
  mutable SQLite::Database database;
  mutable SQLite::Statement versionQuery{database, "PRAGMA data_version"};  // https://www.sqlite.org/pragma.html
};

/// Throws RecordsError, which names it, when there is a mistake.
void RequireNoMistake(const std::optional<RecordMistake>& mistake);

inline void BindBlob(SQLite::Statement& statement, int index, const std::string& bytes) {
  statement.bind(index, bytes.data(), static_cast<int>(bytes.size()));
}

}  // namespace recorder
