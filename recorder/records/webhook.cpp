#include "recorder/records/webhook.h"

#include <SQLiteCpp/Transaction.h>
#include <SQLiteCpp/VariadicBind.h>

#include "recorder/records/records.h"
#include "recorder/records/records_file.h"

namespace recorder {
namespace {

/// The secret is of use with its address alone.
std::string SecretContext(const std::string& url) { return "webhook " + url; }

}  // namespace

std::optional<Webhook> Records::FindWebhook() const {
  return impl_->Guarded([&]() -> std::optional<Webhook> {
    SQLite::Statement query{impl_->database,
                            "SELECT url, revision, toldEvent, toldSteady, triedAt, result FROM webhook"};
    if (!query.executeStep()) return std::nullopt;
    return Webhook{.url = query.getColumn(0).getString(),
                   .revision = query.getColumn(1).getInt64(),
                   .told = {query.getColumn(2).getInt64(), query.getColumn(3).getInt64()},
                   .triedAt = query.getColumn(4).getInt64(),
                   .result = query.getColumn(5).getString()};
  });
}

std::string Records::WebhookSecret(const Webhook& webhook) const {
  return impl_->Guarded([&] {
    SQLite::Statement query{impl_->database, "SELECT secret FROM webhook WHERE url = ?"};
    query.bind(1, webhook.url);
    if (!query.executeStep()) throw RecordsError("the webhook was changed meanwhile");
    auto secret = Unseal(impl_->key, SecretContext(webhook.url), query.getColumn(0).getString());
    if (!secret) throw RecordsError("the secret of the webhook cannot be decrypted: the key file was changed");
    return *std::move(secret);
  });
}

void Records::SetWebhook(const std::string& url, const std::string& secret) {
  impl_->Guarded([&] {
    SQLite::Statement set{
        impl_->database,
        "INSERT INTO webhook VALUES (1, ?1, ?2, random(), (SELECT ifnull(max(id), 0) FROM events), 0, 0, '') "
        "ON CONFLICT (id) DO UPDATE SET url = ?1, secret = ?2, revision = random(), triedAt = 0, result = '', "
        "toldEvent = iif(url = ?1, toldEvent, excluded.toldEvent), toldSteady = iif(url = ?1, toldSteady, 0)"};
    set.bind(1, url);
    BindBlob(set, 2, Seal(impl_->key, SecretContext(url), secret));
    set.exec();
  });
}

bool Records::RemoveWebhook() {
  return impl_->Guarded([&] { return impl_->Run("DELETE FROM webhook") == 1; });
}

void Records::NoteTold(const Webhook& webhook) {
  impl_->Guarded([&] {
    impl_->Run("UPDATE webhook SET toldEvent = ?, toldSteady = ?, triedAt = ?, result = ? WHERE revision = ?",
               webhook.told.event, webhook.told.steady, webhook.triedAt, webhook.result, webhook.revision);
  });
}

}  // namespace recorder
