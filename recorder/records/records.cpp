#include "recorder/records/records.h"

#include <SQLiteCpp/VariadicBind.h>

#include <algorithm>
#include <utility>

#include "recorder/records/record_mistakes.h"
#include "recorder/records/records_file.h"
#include "recorder/utility/limits.h"

namespace recorder {
namespace {

constexpr auto kSelectCameras =
    "SELECT id, name, vendor, model, host, port, user, channel, sourcePath, status, ownerKdId, strongestLogin "
    "FROM cameras ";

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
  camera.strongestLogin = static_cast<LoginMethod>(row.getColumn(column).getInt());
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

std::string KeyContext(TrustKind kind, const std::string& name) {
  return (kind == TrustKind::kClient ? "client " : "server group ") + name;
}

void BindBlob(SQLite::Statement& statement, int index, const std::string& bytes) {
  statement.bind(index, bytes.data(), static_cast<int>(bytes.size()));
}

}  // namespace

void Records::Impl::StorePassword(int id, const std::string& host, int port, const std::string& password) {
  SQLite::Statement update{database, "UPDATE cameras SET password = ? WHERE id = ?"};
  BindBlob(update, 1, Seal(key, PasswordContext(id, host, port), password));
  update.bind(2, id);
  update.exec();
}

int Records::Add(const CameraRecord& camera, const std::string& password) {
  if (const auto mistake = FindMistake(camera, password)) throw RecordsError(mistake->member + ": " + mistake->text);
  return impl_->Guarded([&] {
    SQLite::Transaction transaction{impl_->database, SQLite::TransactionBehavior::IMMEDIATE};
    SQLite::Statement insert{impl_->database,
                             "INSERT INTO cameras (name, vendor, model, host, port, user, password, channel, "
                             "sourcePath, status, ownerKdId) VALUES (?, ?, ?, ?, ?, ?, zeroblob(0), ?, ?, ?, ?)"};
    SQLite::bind(insert, camera.name, camera.vendor, camera.model, camera.host, camera.port, camera.user,
                 camera.channel, camera.sourcePath, static_cast<int>(camera.status), camera.ownerKdId);
    insert.exec();
    const int id = static_cast<int>(impl_->database.getLastInsertRowid());
    impl_->StorePassword(id, camera.host, camera.port, password);
    transaction.commit();
    return id;
  });
}

std::vector<CameraRecord> Records::List() const {
  return impl_->Guarded([&] {
    SQLite::Statement query{impl_->database, std::string(kSelectCameras) + "ORDER BY id"};
    return CamerasOf(query);
  });
}

std::vector<CameraRecord> Records::ListModel(const std::string& vendor, const std::string& model) const {
  return impl_->Guarded([&] {
    SQLite::Statement query{impl_->database,
                            std::string(kSelectCameras) + "WHERE vendor = ? AND model = ? ORDER BY id"};
    SQLite::bind(query, vendor, model);
    return CamerasOf(query);
  });
}

std::optional<CameraRecord> Records::Find(int id) const {
  return impl_->Guarded([&]() -> std::optional<CameraRecord> {
    SQLite::Statement query{impl_->database, std::string(kSelectCameras) + "WHERE id = ?"};
    query.bind(1, id);
    if (!query.executeStep()) return std::nullopt;
    return CameraOf(query);
  });
}

std::string Records::Password(const CameraRecord& camera) const {
  return impl_->Guarded([&] {
    SQLite::Statement query{impl_->database, "SELECT password FROM cameras WHERE id = ?"};
    query.bind(1, camera.id);
    if (!query.executeStep()) throw RecordsError("camera " + std::to_string(camera.id) + " is no longer stored");
    const std::string sealed = query.getColumn(0).getString();
    auto password = Unseal(impl_->key, PasswordContext(camera.id, camera.host, camera.port), sealed);
    if (!password) {
      throw RecordsError("the password of camera " + std::to_string(camera.id) +
                         " cannot be decrypted: its record or the key file was changed; set it again");
    }
    return std::move(*password);
  });
}

bool Records::Remove(int id) {
  return impl_->Guarded([&] {
    SQLite::Statement remove{impl_->database, "DELETE FROM cameras WHERE id = ?"};
    remove.bind(1, id);
    return remove.exec() == 1;
  });
}

bool Records::SetPassword(int id, const std::string& password) {
  return impl_->Guarded([&] {
    SQLite::Transaction transaction{impl_->database, SQLite::TransactionBehavior::IMMEDIATE};
    const auto camera = Find(id);
    if (!camera) return false;
    if (const auto mistake = FindMistake(*camera, password)) throw RecordsError(mistake->member + ": " + mistake->text);
    impl_->StorePassword(id, camera->host, camera->port, password);
    transaction.commit();
    return true;
  });
}

bool Records::SetStatus(int id, CAM_CONN_STATUS status) {
  return impl_->Guarded([&] {
    SQLite::Statement update{impl_->database, "UPDATE cameras SET status = ? WHERE id = ?"};
    SQLite::bind(update, static_cast<int>(status), id);
    return update.exec() == 1;
  });
}

bool Records::Change(int id, const std::function<void(CameraRecord&)>& change,
                     const std::optional<std::string>& password) {
  return impl_->Guarded([&] {
    SQLite::Transaction transaction{impl_->database, SQLite::TransactionBehavior::IMMEDIATE};
    const auto before = Find(id);
    if (!before) return false;
    CameraRecord camera = *before;
    change(camera);
    if (const auto mistake = FindMistake(camera, password.value_or(""))) {
      throw RecordsError(mistake->member + ": " + mistake->text);
    }
    if (!password && !KeepsPassword(*before, camera)) throw RecordsError("password: must be given again");
    SQLite::Statement update{
        impl_->database,
        "UPDATE cameras SET name = ?, vendor = ?, model = ?, host = ?, port = ?, user = ?, channel "
        "= ?, sourcePath = ?, status = ?, ownerKdId = ? WHERE id = ?"};
    SQLite::bind(update, camera.name, camera.vendor, camera.model, camera.host, camera.port, camera.user,
                 camera.channel, camera.sourcePath, static_cast<int>(camera.status), camera.ownerKdId, id);
    update.exec();
    const bool isElsewhere = before->host != camera.host || before->port != camera.port;
    if (isElsewhere) ForgetLogin(id);
    if (isElsewhere) ForgetCertificates(id);
    if (password) impl_->StorePassword(id, camera.host, camera.port, *password);
    transaction.commit();
    return true;
  });
}

bool Records::RaiseLogin(int id, LoginMethod method) {
  return impl_->Guarded([&] {
    SQLite::Statement update{impl_->database,
                             "UPDATE cameras SET strongestLogin = max(strongestLogin, ?) WHERE id = ?"};
    SQLite::bind(update, static_cast<int>(method), id);
    return update.exec() == 1;
  });
}

bool Records::ForgetLogin(int id) {
  return impl_->Guarded([&] {
    SQLite::Statement update{impl_->database, "UPDATE cameras SET strongestLogin = 0 WHERE id = ?"};
    update.bind(1, id);
    return update.exec() == 1;
  });
}

Certificates Records::PinnedCertificates(int id) const {
  return impl_->Guarded([&] {
    SQLite::Statement query{impl_->database, "SELECT port, sha256 FROM certificates WHERE cameraId = ?"};
    query.bind(1, id);
    Certificates certificates;
    while (query.executeStep()) certificates[query.getColumn(0).getInt()] = query.getColumn(1).getString();
    return certificates;
  });
}

std::string Records::PinCertificate(int id, int port, const std::string& certificate) {
  impl_->Guarded([&] {
    SQLite::Statement insert{
        impl_->database,
        "INSERT OR IGNORE INTO certificates SELECT id, ?2, ?3 FROM cameras WHERE id = ?1 AND (port = ?2 OR (SELECT "
        "count(*) FROM certificates WHERE cameraId = ?1 AND certificates.port <> cameras.port) < ?4)"};
    SQLite::bind(insert, id, port, certificate, kMostPinnedPorts);
    insert.exec();
  });
  return PinnedCertificates(id).try_emplace(port, certificate).first->second;
}

void Records::ForgetCertificates(int id) {
  impl_->Guarded([&] {
    SQLite::Statement remove{impl_->database, "DELETE FROM certificates WHERE cameraId = ?"};
    remove.bind(1, id);
    remove.exec();
  });
}

std::map<int, CameraIdentity> Records::Identities() const {
  return impl_->Guarded([&] {
    SQLite::Statement query{impl_->database, "SELECT cameraId, endpoint, serial FROM identities"};
    std::map<int, CameraIdentity> identities;
    while (query.executeStep()) {
      identities[query.getColumn(0).getInt()] = {query.getColumn(1).getString(), query.getColumn(2).getString()};
    }
    return identities;
  });
}

void Records::LearnIdentity(int id, const CameraIdentity& identity) {
  const bool isShort = identity.endpoint.size() <= kLongestFoundName && identity.serial.size() <= kLongestFoundName;
  if (!isShort) return;
  impl_->Guarded([&] {
    SQLite::Statement insert{
        impl_->database,
        "INSERT INTO identities SELECT id, ?2, ?3 FROM cameras WHERE id = ?1 ON CONFLICT (cameraId) DO UPDATE SET "
        "endpoint = iif(endpoint = '', ?2, endpoint), serial = iif(serial = '', ?3, serial)"};
    SQLite::bind(insert, id, identity.endpoint, identity.serial);
    insert.exec();
  });
}

bool Records::AddKey(TrustKind kind, const std::string& name, const SecretKey& key) {
  if (const auto mistake = NameMistake(name)) throw RecordsError("name: " + *mistake);
  return impl_->Guarded([&] {
    SQLite::Statement insert{impl_->database, "INSERT OR IGNORE INTO trustedKeys (kind, name, key) VALUES (?, ?, ?)"};
    SQLite::bind(insert, static_cast<int>(kind), name);
    std::string bytes = key.Bytes();
    const WipeAtEnd wipe{bytes};
    BindBlob(insert, 3, Seal(impl_->key, KeyContext(kind, name), bytes));
    return insert.exec() == 1;
  });
}

bool Records::RemoveKey(TrustKind kind, const std::string& name) {
  return impl_->Guarded([&] {
    SQLite::Statement remove{impl_->database, "DELETE FROM trustedKeys WHERE kind = ? AND name = ?"};
    SQLite::bind(remove, static_cast<int>(kind), name);
    return remove.exec() == 1;
  });
}

bool Records::HasKeys() const {
  return impl_->Guarded(
      [&] { return impl_->database.execAndGet("SELECT EXISTS (SELECT 1 FROM trustedKeys)").getInt() != 0; });
}

std::vector<TrustedKey> Records::ListKeys(TrustKind kind) const {
  return impl_->Guarded([&] {
    SQLite::Statement query{impl_->database, "SELECT name, key FROM trustedKeys WHERE kind = ? ORDER BY name"};
    query.bind(1, static_cast<int>(kind));
    std::vector<TrustedKey> keys;
    while (query.executeStep()) {
      const std::string name = query.getColumn(0).getString();
      auto bytes = Unseal(impl_->key, KeyContext(kind, name), query.getColumn(1).getString());
      const auto key = bytes ? SecretKey::FromBytes(*bytes) : std::nullopt;
      if (!key) throw RecordsError("the key of " + name + " cannot be decrypted: the key file was changed");
      const WipeAtEnd wipe{*bytes};
      keys.push_back({name, *key});
    }
    return keys;
  });
}

}  // namespace recorder
