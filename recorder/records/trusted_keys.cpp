#include <SQLiteCpp/VariadicBind.h>

#include "recorder/records/record_mistakes.h"
#include "recorder/records/records.h"
#include "recorder/records/records_file.h"

namespace recorder {
namespace {

std::string KeyContext(TrustKind kind, const std::string& name) {
  return (kind == TrustKind::kClient ? "client " : "server group ") + name;
}

}  // namespace

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
