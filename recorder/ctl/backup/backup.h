#pragma once

#include <filesystem>
#include <string>

#include "recorder/ctl/backup/backup_file.h"

namespace recorder {

/// Writes all that makes up a recorder to one file (mode 0600), also while it runs: `file` is the whole backup or what
/// it was before. One that is killed may leave a folder beside it whose name begins with that of `file`. `passphrase`
/// seals it, unless it is "". Throws std::exception with a text for people.
void MakeBackup(const std::filesystem::path& stateFolder, const std::filesystem::path& file,
                const std::string& passphrase);

enum class StateThere { kRefuse, kReplace };

/// Puts what `backup`, which is unlocked, holds in place of all that is in the state folder, all or nothing: see
/// StateExchange. It is read and tried as a whole before. Returns where that is now which was there before, "" when
/// that was nothing. Throws std::exception with a text for people, and nothing has changed then.
std::filesystem::path RestoreBackup(BackupReader& backup, const std::filesystem::path& stateFolder, StateThere policy);

}  // namespace recorder
