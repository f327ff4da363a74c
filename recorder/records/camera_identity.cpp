#include <SQLiteCpp/VariadicBind.h>

#include "recorder/records/records.h"
#include "recorder/records/records_file.h"
#include "recorder/utility/limits.h"

namespace recorder {

Certificates Records::PinnedCertificates(int id) const {
  return impl_->Guarded([&] {
    SQLite::Statement query{impl_->database,
                            "SELECT certificates.port, sha256 FROM certificates JOIN cameras ON id = cameraId WHERE "
                            "id = ? AND removedAt IS NULL"};
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
        "INSERT OR IGNORE INTO certificates SELECT id, ?2, ?3 FROM cameras WHERE id = ?1 AND removedAt IS NULL AND "
        "(port = ?2 OR (SELECT "
        "count(*) FROM certificates WHERE cameraId = ?1 AND certificates.port <> cameras.port) < ?4)"};
    SQLite::bind(insert, id, port, certificate, kMostPinnedPorts);
    insert.exec();
  });
  return PinnedCertificates(id).try_emplace(port, certificate).first->second;
}

std::map<int, CameraIdentity> Records::Identities() const {
  return impl_->Guarded([&] {
    SQLite::Statement query{impl_->database,
                            "SELECT cameraId, endpoint, serial FROM identities JOIN cameras ON id = cameraId WHERE "
                            "removedAt IS NULL"};
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
    SQLite::Statement insert{impl_->database,
                             "INSERT INTO identities SELECT id, ?2, ?3 FROM cameras WHERE id = ?1 AND removedAt IS "
                             "NULL ON CONFLICT (cameraId) DO UPDATE SET "
                             "endpoint = iif(endpoint = '', ?2, endpoint), serial = iif(serial = '', ?3, serial)"};
    SQLite::bind(insert, id, identity.endpoint, identity.serial);
    insert.exec();
  });
}

}  // namespace recorder
