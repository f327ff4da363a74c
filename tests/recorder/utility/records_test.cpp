#include "recorder/utility/records.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <thread>

#include "recorder/utility/config.h"
#include "recorder/utility/files.h"
#include "recorder/utility/request_scope.h"
#include "recorder/utility/service.h"
#include "tests/recorder/utility/temp_folder.h"

namespace recorder {
namespace {

namespace fs = std::filesystem;

CameraRecord Camera(const std::string& model = "X100", const std::string& channel = "") {
  CameraRecord camera;
  camera.name = "Tür \"Süd\"";
  camera.vendor = "Acme";
  camera.model = model;
  camera.host = "cam.example";
  camera.port = 8080;
  camera.user = "admin";
  camera.channel = channel;
  return camera;
}

class RecordsTest : public testing::Test {
 protected:
  void Sql(const char* statement) const {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open((State() / "recorder.db").c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, statement, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(database);
    sqlite3_close(database);
  }
  fs::path State() const { return folder.Path() / "deep" / "state"; }
  TempFolder folder;
};

TEST_F(RecordsTest, KeepsCamerasAndPasswords) {
  const int id = Records(State()).Add(Camera(), "pass word");
  Records records{State()};
  const auto found = records.Find(id);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->name, "Tür \"Süd\"");
  EXPECT_EQ(found->host, "cam.example");
  EXPECT_EQ(found->port, 8080);
  EXPECT_EQ(found->status, CAM_CONN_STATUS_NORMAL);
  EXPECT_EQ(records.Password(*found), "pass word");
  EXPECT_TRUE(records.SetPassword(id, ""));
  EXPECT_EQ(records.Password(*found), "");
  EXPECT_TRUE(records.SetStatus(id, CAM_CONN_STATUS_DISABLED));
  EXPECT_EQ(records.List().at(0).status, CAM_CONN_STATUS_DISABLED);
  EXPECT_TRUE(records.Remove(id));
  EXPECT_FALSE(records.Remove(id));
  EXPECT_FALSE(records.SetPassword(id, "x"));
  EXPECT_NE(records.Add(Camera(), "x"), id) << "an id is never given again";
}

TEST_F(RecordsTest, FilesArePrivateAndHoldNoPlainPassword) {
  const mode_t before = umask(0);
  Records records{State()};
  records.Add(Camera(), "plain-secret-text");
  umask(before);
  int files = 0;
  for (const auto& entry : fs::directory_iterator(State())) {
    struct stat status {};
    ASSERT_EQ(stat(entry.path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U) << entry.path();
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

TEST_F(RecordsTest, ANewerFileIsRefusedAndLeftUntouched) {
  Records(State()).Add(Camera(), "secret");
  Sql("PRAGMA journal_mode = DELETE; PRAGMA user_version = 2");
  const std::string before = ReadFile(State() / "recorder.db");
  try {
    const Records records{State()};
    FAIL() << "opened";
  } catch (const RecordsError& error) {
    EXPECT_NE(std::string(error.what()).find("version 2"), std::string::npos) << error.what();
  }
  EXPECT_EQ(ReadFile(State() / "recorder.db"), before);
}

TEST_F(RecordsTest, FindsTheOneCameraOnly) {
  Records records{State()};
  const int any = records.Add(Camera("Any"), "x");
  const int first = records.Add(Camera("Two", "1"), "x");
  records.Add(Camera("Two", "2"), "x");
  records.Add(Camera("Twins"), "x");
  records.Add(Camera("Twins", "1"), "x");
  const struct {
    const char* model;
    const char* channel;
    int id;
  } rows[] = {{"Any", "7", any}, {"Two", "1", first}, {"Two", "3", 0},
              {"Two", "", 0},    {"Twins", "1", 0},   {"None", "1", 0}};
  for (const auto& row : rows) {
    const auto camera = records.FindTheOne("Acme", row.model, row.channel);
    EXPECT_EQ(camera ? camera->id : 0, row.id) << row.model << " channel " << row.channel;
  }
}

struct MistakeCase {
  const char* name;
  std::function<void(CameraRecord&, std::string&)> spoil;
  const char* member;
};

const MistakeCase kMistakeCases[] = {
    {"NoHost", [](auto& camera, auto&) { camera.host = ""; }, "host"},
    {"LoginInHost", [](auto& camera, auto&) { camera.host = "a@evil.example"; }, "host"},
    {"PortTooLarge", [](auto& camera, auto&) { camera.port = 65536; }, "port"},
    {"BlankInVendor", [](auto& camera, auto&) { camera.vendor = "Ac me"; }, "vendor"},
    {"LineBreakInName", [](auto& camera, auto&) { camera.name = "a\nb"; }, "name"},
    {"Latin1Name", [](auto& camera, auto&) { camera.name = "T\xfcr"; }, "name"},
    {"PlaceholderAsPassword", [](auto&, auto& password) { password = gszFakePass; }, "password"},
};

class RecordMistakeTest : public testing::TestWithParam<MistakeCase> {};

TEST_P(RecordMistakeTest, NamesTheMember) {
  CameraRecord camera = Camera();
  std::string password = "x";
  ASSERT_FALSE(FindMistake(camera, password));
  GetParam().spoil(camera, password);
  const auto mistake = FindMistake(camera, password);
  ASSERT_TRUE(mistake);
  EXPECT_EQ(mistake->member, GetParam().member);
}

INSTANTIATE_TEST_SUITE_P(Record, RecordMistakeTest, testing::ValuesIn(kMistakeCases),
                         [](const auto& row) { return std::string(row.param.name); });

// Processes that start at once, some of them killed on the way, must leave one whole key and usable records.
TEST_F(RecordsTest, StartsThatRaceAndDieEndWithOneKey) {
  constexpr int kProcesses = 24;
  std::vector<pid_t> children;
  for (int i = 0; i < kProcesses; ++i) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      try {
        Records(State()).Add(Camera("M" + std::to_string(i)), "secret");
        _exit(0);
      } catch (const std::exception& error) {
        fprintf(stderr, "%s\n", error.what());
        _exit(1);
      }
    }
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
    hasAdded.push_back(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_TRUE(hasAdded.back() || WIFSIGNALED(status)) << "a start failed";
  }
  const Records records{State()};
  for (std::size_t i = 0; i < hasAdded.size(); ++i) {
    const auto camera = records.FindTheOne("Acme", "M" + std::to_string(i), "");
    EXPECT_TRUE(camera || !hasAdded[i]) << "what was added is there: " << i;
    if (camera) {
      EXPECT_EQ(records.Password(*camera), "secret") << "sealed with another key: " << i;
    }
  }
}

class PlatformRecordsTest : public RecordsTest {
 protected:
  PlatformRecordsTest() {
    Config config;
    config.stateFolder = State();
    StartUtility(config);
  }
  ~PlatformRecordsTest() override { SetCameraLimits({}); }
  RequestScope scope{std::chrono::milliseconds(1000)};
};

TEST_F(PlatformRecordsTest, AStoredPasswordIsLentForItsOwnAddress) {
  const int id = Records(State()).Add(Camera(), "secret");
  for (const int camId : {id, 0}) {
    EXPECT_EQ(GetCamRealPass(camId, "Acme", "X100", "1"), "secret");
  }
  EXPECT_EQ(scope.Refusal("cam.example", 8080, "admin", "secret"), std::nullopt);
  EXPECT_EQ(scope.Refusal("evil.example", 8080, "admin", "secret"), Outcome::kLoginRefused);
}

TEST_F(PlatformRecordsTest, NoRecordLendsNothing) {
  const int id = Records(State()).Add(Camera(), "");
  EXPECT_EQ(GetCamRealPass(id, "Acme", "X100", ""), "");
  EXPECT_EQ(GetCamRealPass(id + 1, "Acme", "X100", ""), "");
  EXPECT_EQ(scope.Refusal("evil.example", 80, "admin", ""), std::nullopt);
  EXPECT_EQ(GetCamConnStatus(id + 1), CAM_CONN_STATUS_UNKNOWN);
  EXPECT_EQ(GetCamOwnerKdId(id + 1), kLocalOwnerKdId);
}

TEST_F(PlatformRecordsTest, TheServiceRunsWhileALockIsHeld) {
  EXPECT_FALSE(IsVTRunning());
  {
    const ServiceLock first{State()};
    { const ServiceLock second{State()}; }
    EXPECT_TRUE(IsVTRunning());
  }
  EXPECT_FALSE(IsVTRunning());
}

}  // namespace
}  // namespace recorder
