#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <fstream>
#include <functional>

#include "recorder/records/contact_turns.h"
#include "recorder/records/records.h"
#include "recorder/utility/file_lock.h"
#include "recorder/utility/files.h"
#include "recorder/utility/handle.h"
#include "rig/cameras.h"
#include "rig/processes.h"
#include "tests/recorder/end_to_end/expect.h"

// What is noticed of stored cameras without anybody asking for them.

using namespace rig;
using recorder::Outcome;

namespace {

/// What a camera came to, one after the other, as soon as there are `count` changes of all cameras, or after 30 s.
std::map<int, std::vector<Outcome>> WaitForChanges(const TestRecorder& recorder, std::size_t count) {
  std::vector<recorder::CameraEvent> events;
  for (int tries = 0; tries < 1500 && events.size() < count; ++tries, usleep(20'000)) {
    events = recorder::Records(recorder.StateFolder()).EventsAfter(0, 99);
  }
  std::map<int, std::vector<Outcome>> causes;
  for (const recorder::CameraEvent& event : events) causes[event.cameraId].push_back(event.cause);
  return causes;
}

/// Waits for it, for 30 s at most.
bool Comes(const std::function<bool()>& isThere) {
  for (int tries = 0; tries < 1500 && !isThere(); ++tries) usleep(20'000);
  return isThere();
}

int AskedOf(const SimCameras& cameras, const std::string& name) { return cameras.Log(name)["connections"].asInt(); }

bool TellsLateness(const TestRecorder& recorder) {
  return recorder.Send("GET", "/metrics", {}).body.find("\nrecorder_watch_lateness_seconds ") != std::string::npos;
}

}  // namespace

TEST(Watch, TellsWhenACameraGoesAndComesAndTriesARefusedLoginOnceWhateverIsKilled) {
  using enum Outcome;
  Json::Value camera = Camera("comes and goes");
  auto coming = std::make_unique<SimCameras>(List({camera}));
  const SimCameras others(List({Camera("good"), Faulty("locks", "lockOut")}));
  const TestRecorder recorder({.watchSeconds = 1});
  const int port = coming->Port("comes and goes");
  const int comes = recorder.AddCamera("Simcam", "RTSP-H264", port, "admin", kSecret);
  const int good = recorder.AddCamera("Simcam", "RTSP-H264", others.Port("good"), "admin", kSecret);
  const int locks = recorder.AddCamera("Simcam", "RTSP-H264", others.Port("locks"), "admin", "wrong");
  WaitForChanges(recorder, 3);
  KillWatch();
  coming.reset();
  WaitForChanges(recorder, 4);
  KillWatch();
  camera["port"] = port;
  coming = std::make_unique<SimCameras>(List({camera}));
  WaitForChanges(recorder, 5);
  const int asked = others.Log("good")["requestCount"].asInt();
  for (int tries = 0; tries < 1500 && others.Log("good")["requestCount"].asInt() < 3 * asked; ++tries) usleep(20'000);
  EXPECT_EQ(WaitForChanges(recorder, 5),
            (std::map<int, std::vector<Outcome>>{
                {comes, {kOk, kUnreachable, kOk}}, {good, {kOk}}, {locks, {kLoginRefused}}}));
  EXPECT_EQ(others.Log("locks")["refusedLogins"], 1);
  const Finished status = recorder.Control({"status", "--cause", "loginRefused"});
  EXPECT_EQ(status.status, 1) << "one is down";
  EXPECT_THAT(status.output, testing::HasSubstr("\tdown\t"));
  EXPECT_EQ(recorder.Control({"status", "--cause", "ok"}).status, 0);
  EXPECT_TRUE(TellsLateness(recorder));
}

TEST(Watch, GoesOnWhereTheFileOfRunsIsDamaged) {
  const SimCameras cameras(List({Camera("good")}));
  const TestRecorder recorder({.watchSeconds = 1});
  std::ofstream(recorder.StateFolder() / "runs.db") << "this is no database, however long one looks at it";
  sleep(2);
  const int good = recorder.AddCamera("Simcam", "RTSP-H264", cameras.Port("good"), "admin", kSecret);
  EXPECT_EQ(WaitForChanges(recorder, 1), (std::map<int, std::vector<Outcome>>{{good, {Outcome::kOk}}}));
}

TEST(Watch, GoesOnAfterAnotherProgramHasLockedTheRecordsAndThenTellsWhatItMet) {
  auto cameras = std::make_unique<SimCameras>(List({Camera("goes")}));
  const TestRecorder recorder({.watchSeconds = 1});
  const int goes = recorder.AddCamera("Simcam", "RTSP-H264", cameras->Port("goes"), "admin", kSecret);
  WaitForChanges(recorder, 1);
  const pid_t watch = Descendants(getpid(), "recorder-watch").at(0).id;
  sqlite3* other = nullptr;
  sqlite3_open((recorder.StateFolder() / "recorder.db").c_str(), &other);
  std::unique_ptr<sqlite3, recorder::Deleter<sqlite3_close>> lock(other);
  ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
  cameras.reset();
  const auto isTold = [&] { return recorder.Log().find("database is locked") != std::string::npos; };
  for (int tries = 0; tries < 1500 && !isTold(); ++tries) usleep(20'000);
  lock.reset();
  EXPECT_EQ(WaitForChanges(recorder, 2)[goes], (std::vector{Outcome::kOk, Outcome::kUnreachable}));
  EXPECT_EQ(Descendants(getpid(), "recorder-watch").at(0).id, watch) << "the same process";
  EXPECT_TRUE(isTold());
}

TEST(Watch, TakesNoFailureOfTheRecordsForARefusedLogin) {
  const SimCameras cameras(List({Camera("good")}));
  const TestRecorder recorder({.watchSeconds = 1});
  const int good = recorder.AddCamera("Simcam", "RTSP-H264", cameras.Port("good"), "admin", kSecret);
  WaitForChanges(recorder, 1);
  const std::filesystem::path key = recorder.StateFolder() / "secret.key";
  const std::string whole = recorder::ReadFile(key);
  std::ofstream(key) << "damaged";
  EXPECT_TRUE(Comes([&] { return recorder.Log().find("No stored password is lent") != std::string::npos; }));
  std::ofstream(key) << whole;
  EXPECT_TRUE(Comes([&, asked = AskedOf(cameras, "good")] { return AskedOf(cameras, "good") > asked; }));
  EXPECT_EQ(WaitForChanges(recorder, 1), (std::map<int, std::vector<Outcome>>{{good, {Outcome::kOk}}}));
}

TEST(Watch, LeavesACameraAloneThatSomebodyContacts) {
  const SimCameras cameras(List({Camera("shown"), Camera("other")}));
  const TestRecorder recorder({.watchSeconds = 1});
  const recorder::FileDescriptor locks = recorder::OpenLocks(recorder.StateFolder() / "contacts.lock");
  const recorder::CameraRecord shown{0, "", "", "", "127.0.0.1", cameras.Port("shown"), "", "", ""};
  ASSERT_TRUE(recorder::TryLock(locks, F_RDLCK, recorder::ContactPlace(shown), 1));
  for (const char* name : {"shown", "other"}) {
    recorder.AddCamera("Simcam", "RTSP-H264", cameras.Port(name), "admin", kSecret);
  }
  EXPECT_TRUE(Comes([&] { return AskedOf(cameras, "other") > 6; }));
  EXPECT_LT(AskedOf(cameras, "shown"), 5) << "put off each time, but not twice";
}

TEST(Watch, IsLeftOutIfAskedTo) {
  const TestRecorder recorder({.serveArguments = {"--no-watch"}});
  EXPECT_TRUE(Descendants(getpid(), "recorder-watch").empty());
  EXPECT_EQ(recorder.Control({"status"}).status, 2) << "nobody watches";
  EXPECT_FALSE(TellsLateness(recorder));
}
