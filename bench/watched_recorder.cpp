#include "bench/watched_recorder.h"

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Transaction.h>
#include <SQLiteCpp/VariadicBind.h>

#include <cstdint>
#include <random>
#include <stdexcept>
#include <string>

#include "recorder/records/attempts.h"
#include "recorder/records/records.h"
#include "recorder/utility/clock.h"

namespace bench {

using namespace rig;

namespace {

constexpr std::int64_t kDay = 86'400;
constexpr std::int64_t kDaysKept = 90;
constexpr std::int64_t kLongestPause = 3600;  // in seconds, of a silent camera

void Store(const Fleet& fleet, const TestRecorder& recorder) {
  const TempFolder folder;
  std::string csv = "name,vendor,model,channel,host,port,user,password\n";
  for (int i = 0; i < fleet.Size(); ++i) {
    csv += "camera " + std::to_string(i) + ",Simcam,RTSP-H264,1," + fleet.HostOf(i) + ',' +
           std::to_string(Fleet::kPort) + ',' + Fleet::kUser + ',' + Fleet::kPassword + '\n';
  }
  const Finished finished = recorder.Control({"camera", "import", folder.Write("cameras.csv", csv).string()});
  if (finished.status != 0) throw std::runtime_error(finished.output);
}

std::string DatabaseOf(const TestRecorder& recorder) { return recorder.StateFolder() / "recorder.db"; }

/// All that answer are due in their turn, and silent ones were asked within the last hour.
void Remember(const Fleet& fleet, const TestRecorder& recorder, int watchSeconds) {
  const std::int64_t now = recorder::SecondsNow();
  std::mt19937 random(7);  // NOLINT(bugprone-random-generator-seed): the same each time
  recorder::Attempts attempts(recorder.StateFolder());
  SQLite::Database database(DatabaseOf(recorder), SQLite::OPEN_READWRITE);
  SQLite::Transaction transaction(database);
  SQLite::Statement insert(database, "INSERT INTO outcomes VALUES (?, ?, ?, ?)");
  for (int i = 0; i < fleet.Size(); ++i) {
    const bool isSilent = fleet.IsSilent(i);
    const std::int64_t ago = isSilent ? 1 + static_cast<std::int64_t>(random()) % kLongestPause : watchSeconds;
    const std::int64_t success = isSilent ? 0 : now - ago;
    const auto cause = isSilent ? recorder::Outcome::kTimedOut : recorder::Outcome::kOk;
    attempts.Write(i + 1, {.revision = 1,
                           .at = now - ago,
                           .isAnswered = true,
                           .answered = now - ago,
                           .result = cause,
                           .lastSuccess = success});
    SQLite::bind(insert, i + 1, std::string(isSilent ? "timedOut" : "ok"), now - 2 * kDay, success);
    insert.exec();
    insert.reset();
  }
  transaction.commit();
}

/// Each camera in turn went down, and each came up again in the next turn.
void HappenInThePast(const Fleet& fleet, const TestRecorder& recorder, int eventsADay) {
  SQLite::Database database(DatabaseOf(recorder), SQLite::OPEN_READWRITE);
  SQLite::Statement insert(database, R"(
INSERT INTO events (cameraId, at, cause, causeBefore)
WITH RECURSIVE turns(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM turns WHERE i + 1 < ?1)
SELECT i * 7919 % ?2 + 1, ?3 + i * ?4 / ?1, iif(i / ?2 % 2, 'ok', 'timedOut'), iif(i / ?2 % 2, 'timedOut', 'ok')
FROM turns)");
  SQLite::bind(insert, kDaysKept * eventsADay, fleet.Size(), recorder::SecondsNow() - kDaysKept * kDay,
               kDaysKept * kDay);
  insert.exec();
}

}  // namespace

std::unique_ptr<TestRecorder> WatchedRecorder(const Fleet& fleet, const PastOptions& past) {
  TestRecorder::Options options;
  options.testMs = 10'000;  // as it is by default
  options.workers = 4;
  options.allow.emplace_back(Fleet::kSilentRange);
  options.watchSeconds = past.watchSeconds;
  options.prepare = [&](const TestRecorder& recorder) {
    recorder.AddTester();
    Store(fleet, recorder);
    if (past.isKnown) Remember(fleet, recorder, past.watchSeconds);
    if (past.eventsADay > 0) HappenInThePast(fleet, recorder, past.eventsADay);
  };
  return std::make_unique<TestRecorder>(options);
}

}  // namespace bench
