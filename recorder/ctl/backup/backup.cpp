#include "recorder/ctl/backup/backup.h"

#include <cerrno>
#include <cstdlib>
#include <map>
#include <string>
#include <system_error>

#include "recorder/ctl/backup/state_parts.h"
#include "recorder/ctl/backup/state_trial.h"
#include "recorder/records/records.h"
#include "recorder/utility/files.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/state_exchange.h"
#include "recorder/utility/state_files.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace fs = std::filesystem;
namespace {

/// A folder beside a file, for this user alone, gone with this object.
class SideFolder {
 public:
  explicit SideFolder(const fs::path& file) {
    std::string name = file.string() + ".XXXXXX";
    if (mkdtemp(name.data()) == nullptr) throw std::system_error(errno, std::generic_category(), file.string());
    path_ = name;
  }
  ~SideFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  SideFolder(const SideFolder&) = delete;
  SideFolder& operator=(const SideFolder&) = delete;

  fs::path operator/(const char* name) const { return path_ / name; }

 private:
  fs::path path_;
};

/// Users and their sessions, of one moment. They are read at once, since a running recorder waits for the lock.
std::map<std::string, std::string> ReadAccess(const fs::path& stateFolder) {
  const FileDescriptor lock = LockFolder(stateFolder);
  std::map<std::string, std::string> texts;
  for (const char* part : {kUsersFile, kGrantsFile}) {
    if (fs::exists(stateFolder / part)) texts[part] = ReadFile(stateFolder / part);
  }
  return texts;
}

void Write(const fs::path& stateFolder, const fs::path& records, BackupWriter& backup) {
  backup.AddPart(kRecordsFile, records);
  const auto access = ReadAccess(stateFolder);
  for (const auto& [part, text] : access) backup.AddText(part, text);
  for (const std::string& part : PartsIn(stateFolder)) {
    if (part != kRecordsFile && !access.contains(part)) backup.AddPart(part, stateFolder / part);
  }
  backup.Finish();
}

/// No file fills the volume that cannot be restored.
void CheckRoom(const BackupReader& backup, const fs::path& folder) {
  if (backup.Size() <= fs::space(folder).available) return;
  throw BackupError("there is no room for the backup: it takes " + std::to_string(backup.Size() / kMiB) + " MiB");
}

void Unpack(BackupReader& backup, const fs::path& folder) {
  CheckRoom(backup, folder);
  while (const auto part = backup.NextPart()) {
    if (!IsPart(*part)) throw BackupError("the backup holds what this version does not know: " + EscapeControls(*part));
    MakePrivateFolder((folder / *part).parent_path());
    backup.CopyPart(folder / *part, LargestSize(*part));
  }
}

}  // namespace

void MakeBackup(const fs::path& stateFolder, const fs::path& file, const std::string& passphrase) {
  if (!Records::AreThere(stateFolder)) throw BackupError(stateFolder.string() + ": there is no recorder to back up");
  if (fs::is_directory(file)) throw std::system_error(EISDIR, std::generic_category(), file.string());
  const SideFolder side(file);
  Records(stateFolder).CopyTo(side / "records");
  BackupWriter backup(side / "backup", passphrase);
  Write(stateFolder, side / "records", backup);
  Rename(side / "backup", file);
}

fs::path RestoreBackup(BackupReader& backup, const fs::path& stateFolder, StateThere policy) {
  const StateExchange exchange(stateFolder);
  if (policy == StateThere::kRefuse && !PartsIn(stateFolder).empty()) {
    throw BackupError(stateFolder.string() +
                      ": there is a recorder already; --replace keeps what is there in a folder");
  }
  Unpack(backup, exchange.NewState());
  TryState(exchange.NewState());
  return exchange.Commit();
}

}  // namespace recorder
