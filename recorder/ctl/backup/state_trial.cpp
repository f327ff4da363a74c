#include "recorder/ctl/backup/state_trial.h"

#include <algorithm>
#include <string>

#include "recorder/access/grant.h"
#include "recorder/access/users.h"
#include "recorder/ctl/backup/backup_file.h"
#include "recorder/ctl/backup/state_parts.h"
#include "recorder/ctl/certificate_files.h"
#include "recorder/records/records.h"
#include "recorder/utility/files.h"
#include "recorder/utility/json_text.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace fs = std::filesystem;
namespace {

void TryRecords(const fs::path& folder) {
  if (!Records::AreThere(folder)) throw BackupError("the backup lacks the records or their key");
  if (!Records::AreOfThisProgram(folder)) throw BackupError("the backup's records were not made by this program");
  if (const std::string damage = Records(folder).Damage(); !damage.empty()) throw BackupError(damage);
}

/// A recorder that runs leaves out the lines that it cannot read, and never writes such.
void TryAccess(const fs::path& folder) {
  ReadUsers(folder);
  const std::string text = fs::exists(GrantsFile(folder)) ? ReadFile(GrantsFile(folder)) : "";
  const auto lines = std::ranges::count(text, '\n') + (text.empty() || text.ends_with('\n') ? 0 : 1);
  if (lines == std::ssize(ReadGrants(folder))) return;
  throw BackupError("the backup's sessions and tokens (\"access\") cannot be read");
}

void TryOwnCertificate(const fs::path& folder) {
  const CertificateFiles files = OwnCertificate(folder);
  if (fs::exists(files.certificate) || fs::exists(files.key)) TryCertificate(files, OwnCertificate("the backup's"));
}

/// What is in the JSON files may be of an earlier version: whoever reads them passes over what does not suit him.
void TryJson(const fs::path& folder) {
  for (const std::string& part : PartsIn(folder)) {
    std::string mistakes;
    if (!part.ends_with(".json") || ParseStrictJson(ReadFile(folder / part), mistakes)) continue;
    throw BackupError("the backup's " + EscapeControls(part) + " is no JSON");
  }
}

}  // namespace

void TryState(const fs::path& folder) {
  TryRecords(folder);
  TryAccess(folder);
  TryOwnCertificate(folder);
  TryJson(folder);
}

}  // namespace recorder
