#include "recorder/records/records.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <thread>

#include "recorder/utility/config.h"
#include "recorder/utility/files.h"
#include "rig/temp_folder.h"

namespace recorder {
namespace {

namespace fs = std::filesystem;

CameraRecord Camera(const std::string& model = "X100", const std::string& channel = "") {
  return {0, "Tür \"Süd\"", "Acme", model, "cam.example", 8080, "admin", channel, ""};
}

class RecordsTest : public testing::Test {
 protected:
  void Sql(const char* statement) const {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open((State() / "recorder.db").c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, statement, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(database);
    sqlite3_close(database);
  }
  void Start() const {
    Config config;
    config.stateFolder = State();
    UseConfig(config);
  }
  fs::path State() const { return folder.Path() / "deep" / "state"; }
  rig::TempFolder folder;
};

TEST_F(RecordsTest, FilesArePrivateAndHoldNoPlainPassword) {
  const mode_t before = umask(0);
  Records records{State()};
  records.Add(Camera(), "plain-secret-text");
  umask(before);
  int files = 0;
  for (const auto& entry : fs::directory_iterator(State())) {
    EXPECT_EQ(static_cast<unsigned>(entry.status().permissions()), 0600U) << entry.path();
    EXPECT_EQ(ReadFile(entry.path()).find("plain-secret-text"), std::string::npos) << entry.path();
    ++files;
  }
  EXPECT_EQ(files, 4) << "recorder.db, -wal, -shm and secret.key";
  EXPECT_EQ(static_cast<unsigned>(fs::status(State()).permissions()), 0700U);
}

TEST_F(RecordsTest, APasswordOfAChangedRecordCannotBeRead) {
  const int id = Records(State()).Add(Camera(), "secret");
  Sql("UPDATE cameras SET host = 'evil.example'");
  const Records records{State()};
  EXPECT_THROW(records.Password(*records.Find(id)), RecordsError);
}

TEST_F(RecordsTest, AChangedRecordKeepsItsPasswordForItsOwnStreamAlone) {
  Records records{State()};
  CameraRecord camera = Camera();
  camera.id = records.Add(camera, "secret");
  camera.name = "gate";
  camera.channel = "2";
  const auto change = [&](const std::optional<std::string>& password) {
    const auto become = [&](CameraRecord& record) { record = camera; };
    const CameraChange changed{.record = become, .password = password ? &*password : nullptr};
    return records.Change(camera.id, changed) == ChangeResult::kDone;
  };
  EXPECT_TRUE(change(std::nullopt));
  EXPECT_EQ(records.Password(*records.Find(camera.id)), "secret");

  const std::function<void(CameraRecord&)> others[] = {
      [](CameraRecord& c) { c.host = "other.example"; }, [](CameraRecord& c) { c.port = 81; },
      [](CameraRecord& c) { c.vendor = "Other"; },       [](CameraRecord& c) { c.model = "X200"; },
      [](CameraRecord& c) { c.user = "root"; },          [](CameraRecord& c) { c.sourcePath = "/x"; },
  };
  for (const auto& other : others) {
    other(camera);
    EXPECT_THROW(change(std::nullopt), RecordsError);
    EXPECT_EQ(records.Password(*records.Find(camera.id)), "secret");
    EXPECT_TRUE(change("secret"));
    EXPECT_EQ(records.Password(*records.Find(camera.id)), "secret") << "sealed for the changed record";
  }
  records.RaiseLogin(camera.id, LoginMethod::kMd5);
  camera.name = "yard";
  EXPECT_TRUE(change(std::nullopt));
  EXPECT_EQ(records.Find(camera.id)->strongestLogin, LoginMethod::kMd5);
  camera.port = 82;
  EXPECT_TRUE(change("secret"));
  EXPECT_EQ(records.Find(camera.id)->strongestLogin, LoginMethod::kNone) << "no login has worked there yet";
  camera.port = 0;
  EXPECT_THROW(change("secret"), RecordsError);
  camera = Camera();
  camera.id = 99;
  EXPECT_FALSE(change("secret"));
}

TEST_F(RecordsTest, ACameraIsKnownAgainByWhatWasLearntFirst) {
  Records records{State()};
  const int id = records.Add(Camera(), "secret");
  records.LearnIdentity(id, {"", "0A1B"});
  records.LearnIdentity(id, {"urn:uuid:1", "other"});
  records.LearnIdentity(id + 1, {"urn:uuid:2", ""});
  const std::map<int, CameraIdentity> wanted = {{id, {"urn:uuid:1", "0A1B"}}};
  EXPECT_EQ(records.Identities(), wanted);
  const std::string another = "another";
  records.Change(id, {.password = &another});
  EXPECT_TRUE(records.Identities().empty()) << "whoever sets a password says anew which camera is there";
}

TEST_F(RecordsTest, ANewerFileIsRefusedAndLeftUntouched) {
  Records(State()).Add(Camera(), "secret");
  Sql("PRAGMA journal_mode = DELETE; PRAGMA user_version = 99");
  const std::string before = ReadFile(State() / "recorder.db");
  EXPECT_THROW(Records{State()}, RecordsError);
  EXPECT_EQ(ReadFile(State() / "recorder.db"), before);
}

TEST_F(RecordsTest, AnOpenConnectionTellsThatItsFilesWereReplaced) {
  Records(State()).Add(Camera(), "secret");
  const Records records{State()};
  Records(State()).Add(Camera("Other"), "secret");
  EXPECT_TRUE(records.IsCurrent()) << "what others write is seen";
  for (const char* name : {"recorder.db", "secret.key"}) {
    const Records opened{State()};
    const std::string content = ReadFile(State() / name);
    ReplaceFile(State() / name, content, 0600);
    EXPECT_FALSE(opened.IsCurrent()) << name;
  }
}

// What version 0.1.0 wrote: the key in the first line, then SQL.
TEST_F(RecordsTest, AFileOfAnEarlierVersionIsWholeInThisOne) {
  const std::string text = ReadFile(SOURCE_FOLDER "/tests/data/records/version1.sql");
  const std::string key = text.substr(text.find(": ") + 2, 2 * SecretKey::kSize);
  folder.Write("deep/state/secret.key", SecretKey::FromHex(key)->Bytes());
  fs::permissions(State(), fs::perms::owner_all);
  Sql(text.c_str());
  {
    Records records{State()};
    const auto cameras = records.List();
    ASSERT_EQ(cameras.size(), 2U);
    EXPECT_EQ(cameras[0].name, "Tür \"Süd\"");
    EXPECT_EQ(cameras[1].status, CAM_CONN_STATUS_DISABLED);
    EXPECT_EQ(cameras[1].strongestLogin, LoginMethod::kNone);
    EXPECT_EQ(records.Password(cameras[0]), "first password");
    EXPECT_EQ(records.Password(cameras[1]), "third, \"quoted\"");
    EXPECT_EQ(records.ListKeys(TrustKind::kClient).at(0).key.Hex().substr(0, 4), "abab");
    EXPECT_EQ(records.ListKeys(TrustKind::kServerGroup).at(0).name, "north");
    EXPECT_EQ(records.Add(Camera(), "new"), 4) << "an id is never given again";
  }
  EXPECT_EQ(Records(State()).List().size(), 3U) << "opened once more";
}

/// What a process does that is started to add a camera. An exception ends it with SIGABRT.
[[noreturn]] void AddAndExit(const fs::path& state, const std::string& model) noexcept {
  Records(state).Add(Camera(model), "secret");
  _exit(0);
}

// Processes that start at once, some of them killed on the way, must leave one whole key and usable records.
TEST_F(RecordsTest, StartsThatRaceAndDieEndWithOneKey) {
  constexpr int kProcesses = 24;
  std::vector<pid_t> children;
  for (int i = 0; i < kProcesses; ++i) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) AddAndExit(State(), "M" + std::to_string(i));
    children.push_back(child);
    if (i % 3 == 2) {
      std::this_thread::sleep_for(std::chrono::microseconds(300 * i));
      kill(child, SIGKILL);
    }
  }
  std::vector<bool> hasAdded;
  for (const pid_t child : children) {
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    hasAdded.push_back(status == 0);
    EXPECT_TRUE(status == 0 || (WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL)) << "a start failed";
  }
  const Records records{State()};
  for (std::size_t i = 0; i < hasAdded.size(); ++i) {
    const auto cameras = records.ListModel("Acme", "M" + std::to_string(i));
    EXPECT_TRUE(!cameras.empty() || !hasAdded[i]) << "what was added is there: " << i;
    EXPECT_TRUE(cameras.empty() || records.Password(cameras[0]) == "secret") << "sealed with another key: " << i;
  }
}

TEST_F(RecordsTest, ACameraCountsAsSwitchedOffWhereTheyCannotBeRead) {
  Start();
  const int id = Records(State()).Add(Camera(), "secret");
  EXPECT_EQ(GetCamConnStatus(id), CAM_CONN_STATUS_NORMAL);
  EXPECT_EQ(GetCamConnStatus(id + 1), CAM_CONN_STATUS_UNKNOWN);
  Sql("ALTER TABLE cameras RENAME TO gone");
  EXPECT_EQ(GetCamConnStatus(id), CAM_CONN_STATUS_DISABLED);
}

}  // namespace
}  // namespace recorder
