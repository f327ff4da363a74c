#include "recorder/records/runs.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "recorder/utility/clock.h"
#include "recorder/utility/files.h"
#include "rig/temp_folder.h"

namespace recorder {
namespace {

constexpr char kPassword[] = "plain-secret-text";

RunRow Row(const std::string& host, const std::string& password = kPassword) {
  RunRow row{.camera = {}, .password = password};
  row.camera.host = host;
  row.camera.port = 80;
  row.camera.user = "admin";
  row.camera.name = host;
  row.camera.vendor = "Acme";
  return row;
}

class RunsTest : public testing::Test {
 protected:
  /// A started run of these rows.
  int Started(const std::vector<RunRow>& rows) {
    const int id = runs.Open("anna").value_or(0);
    EXPECT_EQ(runs.Add(id, rows), RunChange::kDone);
    EXPECT_EQ(runs.Start(id), RunChange::kDone);
    return id;
  }

  /// Of each row the result, and what stands for none.
  std::string Results(int id) const {
    std::string text;
    for (const RunResult& row : runs.Results(id, 0, 100)) {
      text += (text.empty() ? "" : " ") + (row.isAtHand ? "atHand" : row.result.empty() ? "waiting" : row.result);
    }
    return text;
  }

  /// The last value of what a query finds.
  std::string Ask(const std::string& query) const {
    sqlite3* database = nullptr;
    EXPECT_EQ(sqlite3_open((State() / "runs.db").c_str(), &database), SQLITE_OK);
    std::string answer;
    const auto take = [](void* text, int, char** values, char**) {
      *static_cast<std::string*>(text) = values[0];
      return 0;
    };
    EXPECT_EQ(sqlite3_exec(database, query.c_str(), take, &answer, nullptr), SQLITE_OK);
    sqlite3_close(database);
    return answer;
  }

  /// Whether these bytes, in hexadecimal, are anywhere in the state folder.
  bool IsThere(const std::string& hex) const {
    std::string bytes;
    for (const auto& entry : std::filesystem::directory_iterator(State())) bytes += ReadFile(entry.path());
    EXPECT_EQ(bytes.find(kPassword), std::string::npos);
    std::string wanted;
    for (std::size_t i = 0; i < hex.size(); i += 2)
      wanted += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    return bytes.find(wanted) != std::string::npos;
  }

  std::filesystem::path State() const { return folder.Path() / "state"; }

  rig::TempFolder folder;
  Runs runs{State()};
};

TEST_F(RunsTest, AListThatIsSentTwiceIsAddedOnce) {
  const int id = runs.Open("anna").value_or(0);
  EXPECT_EQ(runs.Add(id, {Row("a"), Row("b")}, 0), RunChange::kDone);
  EXPECT_EQ(runs.Add(id, {Row("a"), Row("b")}, 0), RunChange::kOtherCount);
  EXPECT_EQ(runs.Add(id, {Row("c")}, 2), RunChange::kDone);
  EXPECT_EQ(runs.Find(id)->rows, 3);
  EXPECT_EQ(runs.Add(id, std::vector<RunRow>(kMostRunRows, Row("a"))), RunChange::kTooMany);
  EXPECT_EQ(runs.Start(id), RunChange::kDone);
  EXPECT_EQ(runs.Add(id, {Row("d")}), RunChange::kNotOpen);
  EXPECT_EQ(runs.Add(id + 1, {Row("d")}), RunChange::kNoRun);
}

TEST_F(RunsTest, ARowThatWasAtHandWhenTheProcessEndedIsNeverTriedAgain) {
  const int id = Started({Row("a"), Row("b"), Row("c")});
  auto begun = runs.Begin(id, {1, 2});
  ASSERT_TRUE(begun && begun->size() == 2);
  EXPECT_EQ(begun->front().password, kPassword);
  runs.Finish(id, {{.number = 1, .outcome = Outcome::kOk}});
  EXPECT_EQ(Results(id), "ok atHand waiting");
  Runs(State()).Recover();
  EXPECT_EQ(Results(id), "ok unknown waiting");
  begun = runs.Begin(id, {1, 2, 3});
  ASSERT_TRUE(begun && begun->size() == 1);
  EXPECT_EQ(begun->front().camera.id, 3);
  runs.Finish(id, {{.number = 2, .outcome = Outcome::kOk}, {.number = 3, .outcome = std::nullopt}});
  EXPECT_EQ(Results(id), "ok unknown unknown");
  EXPECT_EQ(runs.Find(id)->state, RunState::kEnded);
  EXPECT_FALSE(runs.FindStarted());
}

TEST_F(RunsTest, ALoginThatMayHaveBeenRefusedIsNotTriedByOtherRowsOfThatHost) {
  const std::map<std::optional<Outcome>, std::string> results = {{Outcome::kLoginRefused, "loginRefused loginRefused"},
                                                                 {Outcome::kClockUnknown, "clockUnknown clockUnknown"},
                                                                 {std::nullopt, "unknown unknown"},
                                                                 {Outcome::kNoVideo, "noVideo waiting"}};
  for (const auto& [outcome, result] : results) {
    RunRow otherPort = Row("cam");
    otherPort.camera.port = 81;
    const int id = Started({Row("cam"), Row("CAM."), Row("cam", "another"), Row("other"), otherPort});
    ASSERT_TRUE(runs.Begin(id, {1}));
    runs.Finish(id, {{.number = 1, .outcome = outcome}});
    EXPECT_EQ(Results(id), result + " waiting waiting waiting");
  }
}

TEST_F(RunsTest, ARowWhosePasswordIsDamagedIsTriedWithNoOther) {
  const int id = Started({Row("cam"), Row("cam", "another"), Row("other")});
  Ask("UPDATE rows SET password = x'00' WHERE number < 3");
  EXPECT_EQ(runs.Begin(id, {1, 3})->size(), 1U);
  runs.Finish(id, {{.number = 3, .outcome = Outcome::kOk}});
  EXPECT_EQ(Results(id), "recorderFailed waiting ok");
  EXPECT_TRUE(runs.Begin(id, {2})->empty());
  EXPECT_EQ(runs.Find(id)->state, RunState::kEnded);
}

TEST_F(RunsTest, WhatWasSilentInOneRunIsKnownInTheNext) {
  const int id = Started({Row("A"), Row("b")});
  ASSERT_TRUE(runs.Begin(id, {1, 2}));
  runs.Finish(id, {{.number = 1, .outcome = Outcome::kTimedOut}, {.number = 2, .outcome = Outcome::kOk}});
  EXPECT_EQ(runs.SilentHosts(), std::set<std::string>{"a"});
}

TEST_F(RunsTest, AFileOfTheVersionBeforeKeepsItsRows) {
  const int id = Started({Row("a")});
  Ask("ALTER TABLE rows DROP COLUMN codec; ALTER TABLE rows DROP COLUMN streamType; PRAGMA user_version = 1");
  RunRow row = Row("b");
  row.camera.codec = "MJPEG";
  Runs newer(State());
  const auto begun = newer.Begin(id, {1});
  ASSERT_TRUE(begun && begun->size() == 1);
  EXPECT_EQ(begun->front().camera.codec, "");
  const int next = newer.Open("anna").value_or(0);
  EXPECT_EQ(newer.Add(next, {row}), RunChange::kDone);
  EXPECT_EQ(newer.Waiting(next).front().codec, "MJPEG");
}

TEST_F(RunsTest, PasswordsAreOverwrittenOnceTheyAreOfNoMoreUse) {
  const std::function<void(int)> ends[] = {
      [&](int id) {
        ASSERT_TRUE(runs.Begin(id, {1}));
        runs.Finish(id, {{.number = 1, .outcome = Outcome::kOk}});
      },
      [&](int id) { EXPECT_EQ(runs.Cancel(id), RunChange::kDone); },
      [&](int) { runs.Expire(SecondsNow() + std::chrono::seconds(kRunPasswordsKept).count() + 1); },
      [&](int id) {
        ASSERT_TRUE(runs.Begin(id, {1}));
        runs.Recover();
      },
  };
  for (const auto& end : ends) {
    const int id = Started({Row("host-of-" + std::to_string(&end - ends))});
    const std::string sealed = Ask("SELECT hex(password) FROM rows WHERE runId = " + std::to_string(id));
    EXPECT_TRUE(IsThere(sealed));
    end(id);
    EXPECT_FALSE(IsThere(sealed)) << &end - ends;
    EXPECT_FALSE(runs.Begin(id, {1})) << "it is over";
  }
}

}  // namespace
}  // namespace recorder
