#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "recorder/records/refused_logins.h"
#include "recorder/records/runs.h"
#include "recorder/utility/secrets.h"
#include "recorder/watch/records_news.h"

namespace recorder {

/// The logins, with their passwords, that cameras refused within the last hour: those of stored cameras, and of rows of
/// runs since this process began. A row that has the same is not tried again. One thread.
///
/// Secrets: keeps no password, but a keyed digest of it with its login.
class KnownRefusals {
 public:
  explicit KnownRefusals(const std::filesystem::path& stateFolder) : stateFolder_(stateFolder), news_(stateFolder) {}

  /// Reads of stored cameras what has changed. Throws what Records throws.
  void Update();

  /// The text by which a row's login and password are known here.
  std::string DigestOf(const RunRow& row) const;

  /// A login was refused just now.
  void Add(const std::string& digest);
  bool Holds(const std::string& digest) const;

 private:
  void AddStored(const Records& records, const RefusedCamera& refused);

  const std::filesystem::path stateFolder_;
  RecordsNews news_;
  const SecretKey key_ = SecretKey::Random();
  RefusedLogins stored_;
  RefusedLogins tried_;
};

}  // namespace recorder
