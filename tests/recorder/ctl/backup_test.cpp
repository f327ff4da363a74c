#include "recorder/ctl/backup/backup.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <map>
#include <thread>

#include "recorder/ctl/self_signed.h"
#include "recorder/records/records.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/day_text.h"
#include "recorder/utility/files.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/state_exchange.h"
#include "rig/temp_folder.h"

namespace recorder {
namespace {

namespace fs = std::filesystem;

constexpr char kPemBegins[] = "-----BEGIN";

/// Other files of a recorder that have this text in them.
std::map<std::string, std::string> OtherFiles(const std::string& text) {
  static const SelfSigned pair = MakeSelfSigned({"localhost"}, 9);
  return {{"users", text + ":$hash:admin\n"},
          {"access", "token\thash\tid\tadmin\tadmin\t1\t1\t0\t" + text + "\n"},
          {"certificate.pem", text + "\n" + pair.certificate},
          {"certificate-key.pem", text + "\n" + pair.key},
          {"models/acme.own.json", "{\"text\": \"" + text + "\"}"},
          {"capabilities/1.json", "{\"text\": \"" + text + "\"}"}};
}

/// A recorder whose files and passwords have this text in them.
void MakeState(const fs::path& state, const std::string& text) {
  Records(state).Add({0, "door", "Acme", "X100", "cam.example", 80, "admin", "", ""}, text);
  for (const auto& [file, content] : OtherFiles(text)) {
    MakePrivateFolder((state / file).parent_path());
    ReplaceFile(state / file, content);
  }
}

/// Such as "old old old old old old old": which text is in each of its parts.
std::string TextsOf(const fs::path& state) {
  const Records records(state);
  std::string texts;
  for (const CameraRecord& camera : records.List()) texts += records.Password(camera);
  for (const auto& [file, content] : OtherFiles("")) {
    std::string text = fs::exists(state / file) ? ReadFile(state / file) : "";
    text.resize(std::min(text.size(), text.find(kPemBegins)));
    for (const char* found : {" old", " new"}) texts += text.find(found + 1) == std::string::npos ? "" : found;
  }
  return texts;
}

fs::path Restore(const fs::path& file, const fs::path& state, const std::string& passphrase = "",
                 StateThere policy = StateThere::kReplace) {
  BackupReader backup(file);
  if (backup.WantsPassphrase()) backup.Unlock(passphrase);
  return RestoreBackup(backup, state, policy);
}

class BackupTest : public testing::Test {
 protected:
  BackupTest() { MakeState(made, "new"); }

  rig::TempFolder folder;
  const fs::path made = folder.Path() / "made";
  const fs::path state = folder.Path() / "state";
  const fs::path file = folder.Path() / "file";
  const std::string allOld = "old old old old old old old";
  const std::string allNew = "new new new new new new new";
};

TEST_F(BackupTest, BringsBackARecorderToAnEmptyFolder) {
  Records running(made);
  running.Add({0, "gate", "Acme", "X100", "gate.example", 80, "admin", "", ""}, "+in the log of SQLite");
  ReplaceFile(made / "address", "of that run");
  for (const std::string passphrase : {"", "a phrase"}) {
    MakeBackup(made, file, passphrase);
    EXPECT_EQ(static_cast<unsigned>(fs::status(file).permissions()), 0600U);
    const std::string bytes = ReadFile(file);
    EXPECT_EQ(bytes.find(ReadFile(made / "secret.key")), std::string::npos);
    EXPECT_EQ(Restore(file, state, passphrase, StateThere::kRefuse), "");
    EXPECT_EQ(TextsOf(state), "new+in the log of SQLite new new new new new new");
    EXPECT_FALSE(fs::exists(state / "address"));
    EXPECT_EQ(static_cast<unsigned>(fs::status(state / "secret.key").permissions()), 0600U);
    EXPECT_THROW(Restore(file, state, passphrase, StateThere::kRefuse), BackupError) << "there is one already";
    fs::remove_all(state);
  }
}

TEST_F(BackupTest, LeavesWhatIsOfOthersWhereItIsAndKeepsNoRuns) {
  MakeState(state, "old");
  fs::create_directory(state / "lost+found");
  ReplaceFile(state / "runs.db", "passwords");
  fs::create_symlink("/nowhere", state / "runs.db-wal");  // nobody can wipe that
  MakeBackup(made, file, "");
  const fs::path kept = Restore(file, state);
  EXPECT_EQ(TextsOf(state) + TextsOf(kept), allNew + allOld);
  EXPECT_TRUE(fs::exists(state / "lost+found"));
  for (const fs::path& place : {state, kept}) {
    EXPECT_FALSE(fs::exists(place / "runs.db") || fs::is_symlink(place / "runs.db-wal"));
  }
}

TEST_F(BackupTest, KeepsNobodyFromTheStateFolderWhileItWaits) {
  const fs::path slow = made / "certificate.pem";
  fs::remove(slow);
  ASSERT_EQ(mkfifo(slow.c_str(), 0600), 0);
  const std::jthread backup([&] { MakeBackup(made, file, ""); });
  const FileDescriptor writer(open(slow.c_str(), O_WRONLY | O_CLOEXEC));  // the backup reads there now
  const FileDescriptor lock(open(made.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  EXPECT_EQ(flock(lock.Get(), LOCK_EX | LOCK_NB), 0);
}

struct BadFile {
  const char* name;
  std::function<void(std::string& bytes)> spoil;
  const char* told;
};

const BadFile kBadFiles[] = {
    {"Empty", [](std::string& bytes) { bytes.clear(); }, "is no backup"},
    {"Other", [](std::string& bytes) { bytes[3] ^= 1; }, "is no backup"},
    {"Newer", [](std::string& bytes) { bytes[16] = 2; }, "newer version"},
    {"OfNoVersion", [](std::string& bytes) { bytes[16] = 0; }, "newer version"},
    {"OfAnotherKind", [](std::string& bytes) { bytes[17] = 2; }, "newer version"},
    {"CutInItsHead", [](std::string& bytes) { bytes.resize(40); }, "cut off"},
    {"Cut", [](std::string& bytes) { bytes.resize(bytes.size() / 2); }, "cut off"},
    {"CutBeforeItsLastMessage", [](std::string& bytes) { bytes.resize(bytes.size() - 21); }, "cut off"},
    {"Changed", [](std::string& bytes) { bytes[bytes.size() / 2] ^= 1; }, "is damaged"},
    {"Longer", [](std::string& bytes) { bytes += 'x'; }, "is damaged"},
    {"OfAnotherPassphrase", [](std::string&) {}, "the passphrase is another one"},
};

/// What a backup of whoever knows its format holds.
struct BadContent {
  const char* name;
  std::function<void(BackupWriter& backup, const fs::path& state)> write;
  const char* told;
};

void AddAll(BackupWriter& backup, const fs::path& state) {
  for (const char* part : {"recorder.db", "secret.key", "users"}) backup.AddPart(part, state / part);
}

void AddWith(BackupWriter& backup, const fs::path& state, const std::string& part) {
  AddAll(backup, state);
  backup.AddPart(part, state / "users");
}

void AddChanged(BackupWriter& backup, const fs::path& state, const char* statement) {
  sqlite3* database = nullptr;
  sqlite3_open((state / "recorder.db").c_str(), &database);
  sqlite3_exec(database, statement, nullptr, nullptr, nullptr);
  sqlite3_close(database);
  AddAll(backup, state);
}

const BadContent kBadContents[] = {
    {"Above", [](auto& backup, auto& state) { AddWith(backup, state, "../stray"); }, "does not know: ../stray"},
    {"AboveAFolder", [](auto& b, auto& state) { AddWith(b, state, "models/../../stray.json"); }, "does not know"},
    {"AtTheRoot", [](auto& b, auto& state) { AddWith(b, state, "/tmp/stray.json"); }, "does not know"},
    {"Twice", [](auto& backup, auto& state) { AddWith(backup, state, "users"); }, "File exists"},
    {"NoKey", [](auto& backup, auto& state) { backup.AddPart("recorder.db", state / "recorder.db"); }, "lacks"},
    {"NewerRecords", [](auto& b, auto& state) { AddChanged(b, state, "PRAGMA user_version = 1000"); }, "newer program"},
    {"TriggerOfOthers",
     [](auto& backup, auto& state) {
       AddChanged(backup, state, "CREATE TRIGGER t AFTER INSERT ON cameras BEGIN DELETE FROM cameras; END");
     },
     "not made by this program"},
    {"EmptyRecords",
     [](auto& backup, auto& state) {
       ReplaceFile(state / "recorder.db", "");
       fs::remove(state / "recorder.db-wal");
       AddAll(backup, state);
     },
     "not made by this program"},
    {"KeyOfAnother",
     [](auto& backup, auto& state) {
       ReplaceFile(state / "secret.key", SecretKey::Random().Bytes());
       AddAll(backup, state);
     },
     "the key does not fit"},
    {"NoGrants", [](auto& backup, auto& state) { AddWith(backup, state, "access"); }, "sessions and tokens"},
    {"NoCertificate", [](auto& backup, auto& state) { AddWith(backup, state, "certificate.pem"); }, "certificate.pem"},
    {"NoModels", [](auto& backup, auto& state) { AddWith(backup, state, "models/a.json"); }, "a.json is no JSON"},
    {"TooLargeModels",
     [](auto& backup, auto& state) {
       fs::resize_file(state / "users", kLargestFile + 1);
       AddWith(backup, state, "models/a.json");
     },
     "too large"},
};

class BadBackup : public BackupTest {
 protected:
  BadBackup() { MakeState(state, "old"); }

  void ExpectRefused(const std::string& passphrase, const char* told) {
    try {
      Restore(file, state, passphrase);
      ADD_FAILURE() << "it was taken";
    } catch (const std::exception& error) {
      EXPECT_NE(std::string(error.what()).find(told), std::string::npos) << error.what();
    }
    EXPECT_EQ(TextsOf(state), allOld);
    for (const auto& entry : fs::recursive_directory_iterator(folder.Path())) {
      const std::string name = entry.path().filename();
      EXPECT_FALSE(name.starts_with("stray") || name.starts_with("exchange")) << entry.path();
    }
  }
};

TEST_F(BadBackup, IsNamedAndChangesNothing) {
  for (const std::string passphrase : {"", "a phrase"}) {
    MakeBackup(made, file, passphrase);
    const std::string whole = ReadFile(file);
    for (const BadFile& row : kBadFiles) {
      const bool isOther = row.name == std::string("OfAnotherPassphrase");
      if (isOther && passphrase.empty()) continue;
      SCOPED_TRACE(row.name);
      std::string bytes = whole;
      row.spoil(bytes);
      ReplaceFile(file, bytes);
      ExpectRefused(isOther ? "A phrase" : passphrase, row.told);
    }
    fs::remove(file);
  }
}

TEST_F(BadBackup, IsRefusedWhereThereIsNoRoomForIt) {
  MakeBackup(made, file, "");
  fs::resize_file(file, fs::space(folder.Path()).available + kLargestFile);
  ExpectRefused("", "no room");
}

TEST_F(BadBackup, OfForeignContentIsNamedAndChangesNothing) {
  for (const BadContent& row : kBadContents) {
    SCOPED_TRACE(row.name);
    fs::remove_all(made);
    MakeState(made, "new");
    fs::remove(file);
    BackupWriter backup(file, "");
    row.write(backup, made);
    backup.Finish();
    ExpectRefused("", row.told);
  }
}

#ifdef SYS_rename
constexpr std::uint64_t kRename = SYS_rename;
#else
constexpr std::uint64_t kRename = SYS_renameat;
#endif

/// Kills a process that does it before it renames something for the `count`th time; false: it ended before.
bool KillAtRename(int count, const std::function<void()>& action) {
  const pid_t child = fork();
  if (child == 0) {
    ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    std::raise(SIGSTOP);
    action();
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, WUNTRACED);
  ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD);
  while (ptrace(PTRACE_SYSCALL, child, nullptr, nullptr) == 0 && waitpid(child, &status, 0) == child &&
         WIFSTOPPED(status)) {
    __ptrace_syscall_info call{};
    ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof(call), &call);
    const bool isCall = call.op == PTRACE_SYSCALL_INFO_ENTRY;
    if (!isCall || (call.entry.nr != kRename && call.entry.nr != SYS_renameat) || --count != 0) continue;
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    return true;
  }
  return false;
}

TEST_F(BackupTest, IsRestoredAsAWholeOrNotAtAllWhereverItIsKilled) {
  MakeBackup(made, file, "");
  int kills = 0;
  std::string before = allOld;
  for (bool isKilled = true; isKilled; kills += isKilled ? 1 : 0) {
    SCOPED_TRACE(kills);
    fs::remove_all(state);
    MakeState(state, "old");
    isKilled = KillAtRename(kills + 1, [&] { Restore(file, state); });
    FinishStateExchange(state);
    const std::string texts = TextsOf(state);
    EXPECT_TRUE(texts == before || texts == allNew) << texts;
    before = texts;  // once it is decided, it stays so
    if (texts == allOld) continue;
    EXPECT_EQ(TextsOf(state / ("before-restore-" + DayText(SecondsNow()))), allOld);
  }
  EXPECT_EQ(before, allNew);
  EXPECT_GT(kills, 10);
}

}  // namespace
}  // namespace recorder
