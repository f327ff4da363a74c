#include <SQLiteCpp/Backup.h>

#include <algorithm>

#include "recorder/records/record_schema.h"
#include "recorder/records/records.h"
#include "recorder/records/records_file.h"
#include "recorder/utility/state_files.h"

namespace recorder {
namespace {

/// A password may be unreadable because its record was changed behind the recorder's back: that of another camera tells
/// more.
bool IsAnyPasswordReadable(const Records& records, const std::vector<CameraRecord>& cameras) {
  return std::any_of(cameras.begin(), cameras.end(), [&](const CameraRecord& camera) {
    try {
      std::string password = records.Password(camera);
      Wipe(password);
      return true;
    } catch (const RecordsError&) {
      return false;
    }
  });
}

}  // namespace

void Records::CopyTo(const std::filesystem::path& file) const {
  CreateFileOnce(file, "");
  impl_->Guarded([&] {
    SQLite::Database copy{file.string(), SQLite::OPEN_READWRITE};
    SQLite::Backup backup{copy, impl_->database};
    backup.executeStep();  // all at once: one state, and writers do not wait for it
    if (backup.getRemainingPageCount() != 0 || backup.getTotalPageCount() == 0) {
      throw RecordsError("the records cannot be copied now: others write to them");
    }
  });
}

bool Records::AreOfThisProgram(const std::filesystem::path& stateFolder) try {
  SQLite::Database database{(stateFolder / kRecordsFile).string(), SQLite::OPEN_READWRITE};
  return SchemaOf(database) > NewestSchema() || HasOwnSchema(database);
} catch (const SQLite::Exception& error) {
  throw RecordsError(std::string("the records cannot be read: ") + error.what());
}

std::string Records::Damage() const {
  const std::string found = impl_->Guarded(
      [&] { return impl_->database.execAndGet("PRAGMA quick_check(1)").getString(); });  // "ok" or the first fault
  if (found != "ok") return "the records are damaged: " + found;
  const std::vector<CameraRecord> cameras = List();
  if (!cameras.empty() && !IsAnyPasswordReadable(*this, cameras)) return "the key does not fit the records";
  for (const TrustKind kind : {TrustKind::kClient, TrustKind::kServerGroup}) ListKeys(kind);
  return "";
}

}  // namespace recorder
