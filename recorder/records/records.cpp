#include "recorder/records/records.h"

#include <SQLiteCpp/VariadicBind.h>

#include <utility>

#include "recorder/records/records_file.h"
#include "recorder/utility/clock.h"

namespace recorder {
namespace {

constexpr auto kSelectCameras =
    "SELECT id, name, vendor, model, host, port, user, channel, sourcePath, status, ownerKdId, strongestLogin, "
    "revision FROM cameras WHERE removedAt IS NULL ";

CameraRecord CameraOf(SQLite::Statement& row) {
  CameraRecord camera;
  int column = 0;
  camera.id = row.getColumn(column++).getInt();
  for (std::string* text : {&camera.name, &camera.vendor, &camera.model, &camera.host}) {
    *text = row.getColumn(column++).getString();
  }
  camera.port = row.getColumn(column++).getInt();
  for (std::string* text : {&camera.user, &camera.channel, &camera.sourcePath}) {
    *text = row.getColumn(column++).getString();
  }
  camera.status = static_cast<CAM_CONN_STATUS>(row.getColumn(column++).getInt());
  camera.ownerKdId = row.getColumn(column++).getInt();
  camera.strongestLogin = static_cast<LoginMethod>(row.getColumn(column++).getInt());
  camera.revision = row.getColumn(column).getInt();
  return camera;
}

std::vector<CameraRecord> CamerasOf(SQLite::Statement& query) {
  std::vector<CameraRecord> cameras;
  while (query.executeStep()) cameras.push_back(CameraOf(query));
  return cameras;
}

std::string PasswordContext(int id, const std::string& host, int port) {
  return "camera " + std::to_string(id) + ' ' + std::to_string(port) + ' ' + host;
}

}  // namespace

void RequireNoMistake(const std::optional<RecordMistake>& mistake) {
  if (mistake) throw RecordsError(mistake->member + ": " + mistake->text);
}

void Records::Impl::StorePassword(const CameraRecord& camera, const std::string& password) {
  SQLite::Statement update{database, "UPDATE cameras SET password = ? WHERE id = ?"};
  BindBlob(update, 1, Seal(key, PasswordContext(camera.id, camera.host, camera.port), password));
  update.bind(2, camera.id);
  update.exec();
}

void Records::Impl::StoreRecord(const CameraRecord& camera) {
  SQLite::Statement update{database,
                           "UPDATE cameras SET name = ?, vendor = ?, model = ?, host = ?, port = ?, user = ?, channel "
                           "= ?, sourcePath = ?, status = ?, ownerKdId = ?, revision = ? WHERE id = ?"};
  SQLite::bind(update, camera.name, camera.vendor, camera.model, camera.host, camera.port, camera.user, camera.channel,
               camera.sourcePath, static_cast<int>(camera.status), camera.ownerKdId, camera.revision, camera.id);
  update.exec();
}

int Records::Add(const CameraRecord& camera, const std::string& password, const std::vector<CameraStream>& streams,
                 const std::vector<CameraFact>& facts, const std::function<void()>& check) {
  RequireNoMistake(FindMistake(camera, password));
  return impl_->Guarded([&] {
    SQLite::Transaction transaction{impl_->database, SQLite::TransactionBehavior::IMMEDIATE};
    if (check) check();
    impl_->Run(
        "INSERT INTO cameras (name, vendor, model, host, port, user, password, channel, sourcePath, status, ownerKdId) "
        "VALUES ('', '', '', '', 0, '', zeroblob(0), '', '', 0, 0)");
    CameraRecord stored = camera;
    stored.id = static_cast<int>(impl_->database.getLastInsertRowid());
    stored.revision = 1;
    impl_->StoreRecord(stored);
    impl_->StorePassword(stored, password);
    impl_->StoreStreams(stored.id, streams);
    impl_->StoreFacts(stored.id, facts);
    transaction.commit();
    return stored.id;
  });
}

std::vector<CameraRecord> Records::List() const {
  return impl_->Guarded([&] {
    SQLite::Statement query{impl_->database, std::string(kSelectCameras) + "ORDER BY id"};
    return CamerasOf(query);
  });
}

std::map<int, int> Records::Revisions() const {
  return impl_->Guarded([&] {
    SQLite::Statement query{impl_->database, "SELECT id, revision FROM cameras WHERE removedAt IS NULL"};
    std::map<int, int> revisions;
    while (query.executeStep()) revisions[query.getColumn(0).getInt()] = query.getColumn(1).getInt();
    return revisions;
  });
}

std::vector<CameraRecord> Records::ListModel(const std::string& vendor, const std::string& model) const {
  return impl_->Guarded([&] {
    SQLite::Statement query{impl_->database, std::string(kSelectCameras) + "AND vendor = ? AND model = ? ORDER BY id"};
    SQLite::bind(query, vendor, model);
    return CamerasOf(query);
  });
}

std::optional<CameraRecord> Records::Find(int id) const {
  return impl_->Guarded([&]() -> std::optional<CameraRecord> {
    SQLite::Statement query{impl_->database, std::string(kSelectCameras) + "AND id = ?"};
    query.bind(1, id);
    if (!query.executeStep()) return std::nullopt;
    return CameraOf(query);
  });
}

std::string Records::Password(const CameraRecord& camera) const {
  return impl_->Guarded([&] {
    const std::string sealed = SealedPassword(camera.id);
    if (sealed.empty()) throw RecordsError("camera " + std::to_string(camera.id) + " is no longer stored");
    auto password = Unseal(impl_->key, PasswordContext(camera.id, camera.host, camera.port), sealed);
    if (!password) {
      throw RecordsError("the password of camera " + std::to_string(camera.id) +
                         " cannot be decrypted: its record or the key file was changed; set it again");
    }
    return std::move(*password);
  });
}

std::string Records::SealedPassword(int id) const {
  return impl_->Guarded([&] {
    SQLite::Statement query{impl_->database, "SELECT password FROM cameras WHERE id = ? AND removedAt IS NULL"};
    query.bind(1, id);
    return query.executeStep() ? query.getColumn(0).getString() : std::string();
  });
}

ChangeResult Records::Change(int id, const CameraChange& change) {
  return impl_->Guarded([&] {
    SQLite::Transaction transaction{impl_->database, SQLite::TransactionBehavior::IMMEDIATE};
    const auto before = Find(id);
    if (!before) return ChangeResult::kNoCamera;
    if (change.revision.value_or(before->revision) != before->revision) return ChangeResult::kOtherRevision;
    CameraRecord after = *before;
    if (change.record) change.record(after);
    after.id = id;
    after.revision = before->revision + 1;
    if (change.check) change.check();
    RequireNoMistake(FindMistake(after, change.password != nullptr ? *change.password : ""));
    const bool keepsPassword = KeepsPassword(*before, Streams(id), after, change);
    if (!keepsPassword && change.password == nullptr) throw RecordsError("password: must be given again");
    impl_->StoreRecord(after);
    impl_->ForgetOutdated(*before, after, change);
    impl_->BeginAnew(*before, after);
    if (change.password != nullptr) impl_->StorePassword(after, *change.password);
    if (change.streams) impl_->StoreStreams(id, *change.streams);
    if (change.facts) impl_->StoreFacts(id, *change.facts);
    transaction.commit();
    return ChangeResult::kDone;
  });
}

ChangeResult Records::Remove(int id, std::optional<int> revision) {
  return impl_->Guarded([&] {
    SQLite::Transaction transaction{impl_->database, SQLite::TransactionBehavior::IMMEDIATE};
    const auto camera = Find(id);
    if (!camera) return ChangeResult::kNoCamera;
    if (revision.value_or(camera->revision) != camera->revision) return ChangeResult::kOtherRevision;
    impl_->Run("UPDATE cameras SET removedAt = ? WHERE id = ?", SecondsNow(), id);
    transaction.commit();
    return ChangeResult::kDone;
  });
}

bool Records::Restore(int id, const std::function<void()>& check) {
  return impl_->Guarded([&] {
    const std::int64_t earliest = SecondsNow() - kUndoTime.count();
    SQLite::Transaction transaction{impl_->database, SQLite::TransactionBehavior::IMMEDIATE};
    if (impl_->Run("UPDATE cameras SET removedAt = NULL WHERE id = ? AND removedAt >= ?", id, earliest) != 1) {
      return false;
    }
    if (check) check();
    transaction.commit();
    return true;
  });
}

bool Records::RaiseLogin(int id, LoginMethod method) {
  return impl_->Guarded([&] {
    return impl_->Run("UPDATE cameras SET strongestLogin = max(strongestLogin, ?) WHERE id = ? AND removedAt IS NULL",
                      static_cast<int>(method), id) == 1;
  });
}

}  // namespace recorder
