#include "recorder/records/records_file.h"

#include <sqlite3.h>

#include "recorder/records/record_schema.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/state_files.h"

namespace recorder {
namespace fs = std::filesystem;
namespace {

/// SQLite gives its side files the mode of the database file, so that this one mode is enough. A file that is there is
/// for SQLite alone to open: closing any descriptor of it drops the locks that other connections of this process hold
/// (fcntl(2), "record locks").
void MakeDatabaseFile(const fs::path& file) {
  if (!fs::exists(file)) CreateFileOnce(file, "");
}

/// What closing a connection does with the write-ahead log.
enum class OnClose : int {
  kMoveLog = 0,   ///< into the file, as usual
  kLeaveLog = 1,  ///< as it is: that of a newer version's file is not for us to move
};

void Set(SQLite::Database& database, OnClose onClose) {
  sqlite3_db_config(database.getHandle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, static_cast<int>(onClose), nullptr);
}

/// Deletes the cameras that were removed and can no longer be restored. It writes nothing when there are none.
void DeleteRemoved(SQLite::Database& database) {
  const std::string earliest = std::to_string(SecondsNow() - kUndoTime.count());
  const std::string old = " FROM cameras WHERE removedAt < " + earliest;
  if (database.execAndGet("SELECT EXISTS (SELECT 1" + old + ")").getInt() != 0) database.exec("DELETE" + old);
}

}  // namespace

Records::Impl::Impl(const fs::path& stateFolder)
    : DatabaseFile{stateFolder / kRecordsFile},
      keyFile(stateFolder / kKeyFile),
      fileStamp(StampOf(file)),
      keyStamp(StampOf(keyFile)),
      key(LoadOrMakeKey(keyFile)),
      database(Open(stateFolder)) {}

SQLite::Database Records::Impl::Open(const fs::path& stateFolder) const {
  MakeDatabaseFile(file);
  return Guarded([&] {
    SQLite::Database opened{file.string(), SQLite::OPEN_READWRITE, kBusyTimeoutMs};
    Set(opened, OnClose::kLeaveLog);
    {
      // Somebody may have died while making or changing the schema: whoever comes next repairs that alone, as SQLite
      // does not wait for another process there.
      const FileDescriptor lock = LockFolder(stateFolder);
      if (const int version = SchemaOf(opened); version > NewestSchema()) {
        throw RecordsError(file.string() + ": has version " + std::to_string(version) +
                           ", this program knows version " + std::to_string(NewestSchema()) + "; use a newer program");
      }
      UpdateSchema(opened);
    }
    Set(opened, OnClose::kMoveLog);
    opened.exec("PRAGMA synchronous = FULL");
    DeleteRemoved(opened);
    return opened;
  });
}

Records::Records(const fs::path& stateFolder) {
  if (stateFolder.empty()) throw RecordsError("no state folder is set");
  MakePrivateFolder(stateFolder);
  impl_ = std::make_unique<Impl>(stateFolder);
}

Records::~Records() = default;

bool Records::AreThere(const fs::path& stateFolder) {
  std::error_code ignored;
  return fs::exists(stateFolder / kRecordsFile, ignored) && fs::exists(stateFolder / kKeyFile, ignored);
}

bool Records::IsCurrent() const {
  const FileStamp now = StampOf(impl_->file);  // its content may change
  const bool isSameFile = now.device == impl_->fileStamp.device && now.inode == impl_->fileStamp.inode;
  return isSameFile && StampOf(impl_->keyFile) == impl_->keyStamp;
}

std::int64_t Records::Version() const {
  return impl_->Guarded([&] {
    impl_->versionQuery.executeStep();
    const std::int64_t version = impl_->versionQuery.getColumn(0).getInt64();
    impl_->versionQuery.reset();
    return version;
  });
}

}  // namespace recorder
