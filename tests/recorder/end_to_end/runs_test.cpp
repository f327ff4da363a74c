#include "recorder/records/runs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "recorder/records/attempts.h"
#include "recorder/records/records.h"
#include "recorder/utility/clock.h"
#include "recorder/utility/handle.h"
#include "rig/cameras.h"
#include "rig/proxy.h"
#include "tests/recorder/end_to_end/expect.h"
#include "tests/recorder/listen.h"

// Long lists of cameras that are tested in the background.

using namespace rig;

namespace {

constexpr char kRuns[] = "/recorder/1/runs";
constexpr char kWrong[] = "a wrong password";

Json::Value Row(const std::string& host, int port, const std::string& password = kSecret,
                const std::string& channel = "") {
  Json::Value row = ParseJson(R"({"vendor": "Simcam", "model": "RTSP-H264", "user": "admin"})");
  row["host"] = host;
  row["port"] = port;
  row["password"] = password;
  row["channel"] = channel;
  return row;
}

class LongLists : public testing::Test {
 protected:
  Answer Send(const std::string& verb, const std::string& path, const Json::Value& body = Json::objectValue) {
    Answer answer = recorder.Send(verb, kRuns + path, recorder.Login(), verb == "POST" ? ToText(body) : "");
    answers += answer.head + answer.body;
    return answer;
  }

  std::string Opened() { return "/" + std::to_string(Send("POST", "").json["data"]["id"].asInt()); }

  Answer Add(const std::string& run, const Json::Value& rows) {
    Json::Value body;
    body["rows"] = rows;
    return Send("POST", run + "/rows", body);
  }

  std::string Started(const Json::Value& rows) {
    std::string run = Opened();
    EXPECT_EQ(Add(run, rows).status, 200);
    int status = 503;  // until recorder-watch is there
    for (int tries = 0; tries < 500 && status == 503; ++tries, usleep(20'000)) {
      status = Send("POST", run + "/start").status;
    }
    EXPECT_EQ(status, 200);
    return run;
  }

  /// The run as soon as `isEnough` of it, or after 30 s.
  Json::Value WaitFor(const std::string& run, const std::function<bool(const Json::Value&)>& isEnough) {
    Json::Value data;
    for (int tries = 0; tries < 1500 && !(!data.isNull() && isEnough(data)); ++tries, usleep(20'000)) {
      data = Send("GET", run).json["data"];
    }
    return data;
  }

  /// Cause by cause, page by page.
  std::vector<std::string> Causes(const std::string& run) {
    std::vector<std::string> causes;
    for (Json::Value next = 0; !next.isNull();) {
      const Json::Value data = Send("GET", run + "/rows?limit=25&after=" + next.asString()).json["data"];
      for (const Json::Value& row : data["rows"])
        causes.push_back(row["cause"].isNull() ? "" : row["cause"].asString());
      next = data["next"];
    }
    return causes;
  }

  void ExpectNoPassword() {
    std::string kept = answers + recorder.Log();
    for (const auto& file : std::filesystem::recursive_directory_iterator(recorder.StateFolder())) {
      if (file.is_regular_file()) kept += ReadText(file.path());
    }
    for (const char* password : {kSecret, kWrong}) EXPECT_EQ(kept.find(password), std::string::npos);
  }

  const TestRecorder recorder{{.watchSeconds = 60}};
  std::string answers;
};

TEST_F(LongLists, TestsEachRowOnceWhateverIsKilled) {
  const SimCameras cameras(List({Camera("good"), Faulty("held", "silentAfterDescribe"), Faulty("locks", "lockOut")}));
  Json::Value rows = List({Row("127.0.0.1", cameras.Port("held"), kSecret, "1")});
  for (int i = 0; i < 20; ++i) {
    rows.append(Row("localhost", cameras.Port("good"), kSecret, i % 2 == 0 ? "" : "1"));
    rows.append(Row("localhost", cameras.Port("locks"), kWrong));
    rows.append(Row("localhost", 1));
  }
  const std::string run = Started(rows);
  WaitFor(run, [&](const Json::Value& data) { return data["done"] > 2 && cameras.Log("held")["logins"] == 1; });
  KillWatch();
  const Json::Value end = WaitFor(run, [](const Json::Value& data) { return data["state"] == "ended"; });
  EXPECT_EQ(end["done"], 61) << end;
  const std::vector<std::string> causes = Causes(run);
  ASSERT_EQ(causes.size(), 61U);
  EXPECT_EQ(causes[0], "unknown") << "it was at hand";
  std::map<std::string, int> counts;
  for (const std::string& cause : causes) ++counts[cause];
  EXPECT_EQ(counts["ok"] + counts["unknown"] + counts["unreachable"], 41) << end;
  EXPECT_EQ(counts["loginRefused"], 20) << end;
  EXPECT_EQ(cameras.Log("held")["logins"], 1);
  EXPECT_EQ(cameras.Log("locks")["refusedLogins"], 1);
  ExpectNoPassword();
}

TEST_F(LongLists, TriesNoPasswordThatAStoredCameraOrARunBeforeHasJustSeenRefused) {
  using recorder::Outcome;
  const SimCameras cameras(List({Camera("good"), Faulty("locks", "lockOut")}));
  const int stored = recorder.AddCamera("Simcam", "RTSP-H264", cameras.Port("good"), "admin", kWrong);
  recorder::Records(recorder.StateFolder()).NoteOutcome(stored, {Outcome::kLoginRefused, recorder::SecondsNow()});
  Json::Value other = Row("127.0.0.1", cameras.Port("good"));
  other["codec"] = "MJPEG";
  const Json::Value rows = List({Row("127.0.0.1", cameras.Port("good"), kWrong), Row("127.0.0.1", cameras.Port("good")),
                                 Row("127.0.0.1", cameras.Port("locks"), kWrong), other});
  for (int runs = 0; runs < 2; ++runs) {
    const std::string run = Started(rows);
    WaitFor(run, [](const Json::Value& data) { return data["state"] == "ended"; });
    EXPECT_THAT(Causes(run), testing::ElementsAre("loginRefused", "ok", "loginRefused", "noVideo"));
  }
  EXPECT_EQ(cameras.Log("good")["refusedLogins"], 0);
  EXPECT_EQ(cameras.Log("locks")["refusedLogins"], 1);
}

TEST(LongList, GoesOnWhileSilentStoredCamerasKeepTheWatchBusy) {
  constexpr std::size_t kMany = 200;
  const TestRecorder recorder({.testMs = 2000, .watchSeconds = 1});
  recorder::Records records(recorder.StateFolder());
  std::vector<recorder::FileDescriptor> listeners;
  for (std::size_t i = 1; i <= kMany; ++i) {
    const std::string host = "127.0.1." + std::to_string(i);
    auto [listener, port] = Listen(host);  // and says nothing
    listeners.push_back(std::move(listener));
    records.Add({0, host, "Simcam", "RTSP-H264", host, port, "admin", "", ""}, kSecret);
  }
  const auto tried = [&] { return recorder::Attempts::Read(recorder.StateFolder()).size(); };
  while (tried() < 40) usleep(20'000);
  recorder::Runs runs(recorder.StateFolder());
  const int run = runs.Open("anna").value_or(0);
  runs.Add(run,
           {{.camera = {{0, "row", "Simcam", "RTSP-H264", "127.0.0.1", 1, "admin", "", ""}}, .password = kSecret}});
  runs.Start(run);
  for (int tries = 0; tries < 1500 && runs.Find(run)->state != recorder::RunState::kEnded; ++tries) usleep(20'000);
  EXPECT_LT(tried(), kMany) << "the row waited for all of them";
}

TEST_F(LongLists, NoRowWaitsForOneThatDoesNotEvenConnect) {
  const SimCameras cameras(List({Camera("good")}));
  Proxy silent;
  silent.LeadTo(cameras.Port("good"), {.isFull = true});
  const std::string run = Started(List({Row("127.0.0.1", silent.Port()), Row("localhost", cameras.Port("good"))}));
  const auto isFirst = [](const Json::Value& data) { return data["results"]["ok"] == 1; };
  EXPECT_EQ(WaitFor(run, isFirst)["done"], 1) << "they share no call";
}

TEST_F(LongLists, ACancelledOneEndsWhatIsAtHandAndBeginsNothingElse) {
  const SimCameras cameras(List({Camera("good"), Faulty("held", "silentAfterDescribe")}));
  Json::Value rows = List({Row("127.0.0.1", cameras.Port("held")), Row("localhost", 1)});
  for (int i = 0; i < 5; ++i) rows.append(Row("127.0.0.1", cameras.Port("good")));
  const std::string run = Started(rows);
  WaitFor(run, [&](const Json::Value&) { return cameras.Log("held")["logins"].asInt() >= 1; });
  EXPECT_EQ(Send("DELETE", run).json["data"]["state"], "cancelled");
  ExpectNoPassword();
  WaitFor(run, [](const Json::Value& data) { return data["atHand"] == 0; });
  EXPECT_THAT(Causes(run), testing::ElementsAre("timedOut", "unreachable", "", "", "", "", ""));
  EXPECT_EQ(cameras.Log("good")["requestCount"], 0);
  EXPECT_EQ(Send("DELETE", run).status, 200);
  EXPECT_EQ(Send("GET", run).status, 404);
}

TEST(LongListsWithoutWatch, AreNotStartedAndWhatWasAtHandEnds) {
  using namespace recorder;
  const auto leaveOneAtHand = [](const TestRecorder& recorder) {
    recorder.AddTester();
    Runs runs(recorder.StateFolder());
    RunRow row{{}, kSecret};
    row.camera.host = "cam";
    runs.Open("test");
    runs.Add(1, {row});
    runs.Start(1);
    runs.Begin(1, {1});
  };
  const TestRecorder recorder({.prepare = leaveOneAtHand});
  const auto send = [&](const std::string& verb, const std::string& path) {
    return recorder.Send(verb, kRuns + path, recorder.Login(), verb == "POST" ? "{}" : "");
  };
  Json::Value run;
  for (int tries = 0; tries < 500 && run["state"] != "ended"; ++tries, usleep(20'000)) {
    run = send("GET", "/1").json["data"];
  }
  EXPECT_EQ(run["results"]["unknown"], 1) << run;
  EXPECT_EQ(run["hasTester"], false);
  send("POST", "");
  const Answer started = send("POST", "/2/start");
  EXPECT_EQ(started.status, 503);
  EXPECT_EQ(started.json["error"]["reason"], "noTester") << started.body;
}

TEST_F(LongLists, TakesNothingOfARequestWithAMistakeAndNamesEach) {
  const std::string run = Opened();
  Json::Value rows = List(
      {Row("cam", 80), Row("cam", 0), Row("cam", 80, "[stored-password-6f1e0b9c42d7]"), Row("", 80), Row("cam", 80)});
  rows[4]["codec"] = "H264";
  rows[0]["name"] = std::string(65, 'n');
  const Json::Value error = Add(run, rows).json["error"];
  std::string mistakes;
  for (const Json::Value& mistake : error["rows"]) {
    mistakes += mistake["line"].asString() + mistake["member"].asString() + " ";
  }
  EXPECT_EQ(mistakes, "1name 2port 3password 4host 5codec ") << error;
  EXPECT_EQ(Send("GET", run).json["data"]["rows"], 0);
  Json::Value many(Json::arrayValue);
  Json::Value large = Row("cam.example", 80);
  for (const char* member : {"name", "channel"}) large[member] = std::string(64, 'n');
  for (int i = 0; i < 1000; ++i) many.append(large);
  EXPECT_GT(ToText(many).size(), std::size_t{128} << 10U);
  EXPECT_EQ(Add(run, many).json["data"]["rows"], 1000);
  many.append(large);
  EXPECT_EQ(Add(run, many).status, 400);
}

}  // namespace
