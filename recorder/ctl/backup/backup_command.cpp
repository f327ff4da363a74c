#include "recorder/ctl/backup/backup_command.h"

#include <iostream>
#include <memory>
#include <stdexcept>

#include "recorder/ctl/backup/backup.h"
#include "recorder/ctl/password_input.h"
#include "recorder/ctl/state_folder.h"

namespace recorder {

namespace {

struct BackupOptions {
  std::string file;
  bool hasPassphrase = false;
  bool isReplacing = false;
};

void BackUp(const BackupOptions& options, const std::filesystem::path& stateFolder) {
  std::string passphrase = options.hasPassphrase ? ReadPassword("Passphrase of the backup") : "";
  const WipeAtEnd wipe(passphrase);
  if (options.hasPassphrase && passphrase.empty()) throw std::runtime_error("no passphrase on standard input");
  MakeBackup(stateFolder, options.file, passphrase);
  std::cout << options.file << " holds the recorder and the key to all passwords of its cameras: "
            << (options.hasPassphrase ? "without the passphrase it is of no use\n"
                                      : "who has it can read them; --passphrase seals it\n");
}

/// A passphrase that is wanted proves who made the file: one that anybody could have made is not taken for it.
void UnlockFor(BackupReader& backup, const BackupOptions& options) {
  if (!backup.WantsPassphrase() && options.hasPassphrase) {
    throw std::runtime_error(options.file + ": is not sealed with a passphrase; anybody may have made it");
  }
  if (!backup.WantsPassphrase()) return;
  std::string passphrase = ReadKnownPassword("Passphrase of the backup");
  const WipeAtEnd wipe(passphrase);
  backup.Unlock(passphrase);
}

void Restore(const BackupOptions& options, const std::filesystem::path& stateFolder) {
  BackupReader backup(options.file);
  UnlockFor(backup, options);
  const auto kept =
      RestoreBackup(backup, stateFolder, options.isReplacing ? StateThere::kReplace : StateThere::kRefuse);
  std::cout << "restored " << stateFolder.string() << "\n";
  if (!kept.empty()) std::cout << "what was there before is in " << kept.string() << "\n";
}

}  // namespace

void AddBackupCommands(CLI::App& app, const std::string& configOption) {
  const auto options = std::make_shared<BackupOptions>();
  CLI::App* backup = app.add_subcommand(
      "backup",
      "Write all that makes up the recorder to one file, also while it runs: cameras and their passwords with the key "
      "to them, users, tokens, certificate, own models. The configuration is not in it, nor are runs of tests");
  backup->add_option("file", options->file, "file to write, or to replace")->required();
  backup->add_flag("--passphrase", options->hasPassphrase,
                   "seal it with a passphrase, read from standard input or a prompt");
  backup->footer("Example:\n  recorderctl backup --passphrase recorder.backup");
  backup->callback([options, &configOption] { BackUp(*options, StateFolder(configOption)); });

  CLI::App* restore = app.add_subcommand(
      "restore",
      "Bring back a recorder from the file of a backup, while it does not run: all of it, or nothing. Users, sessions "
      "and tokens are those of that day. A passphrase is read from standard input or a prompt");
  restore->add_option("file", options->file, "file of a backup")->required();
  restore->add_flag("--replace", options->isReplacing,
                    "put it in the place of a recorder that is there, which is kept in a folder \"before-restore-DAY\" "
                    "of the state folder");
  restore->add_flag("--passphrase", options->hasPassphrase,
                    "refuse a file that is not sealed with a passphrase, which somebody else may have put there");
  restore->footer("Example:\n  recorderctl restore --passphrase recorder.backup");
  restore->callback([options, &configOption] { Restore(*options, StateFolder(configOption)); });
}

}  // namespace recorder
