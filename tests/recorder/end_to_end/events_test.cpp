#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "recorder/records/records.h"
#include "recorder/utility/clock.h"
#include "rig/recorder.h"

// How others hear that a stored camera has changed.

using namespace rig;
using recorder::Outcome;
using testing::HasSubstr;

namespace {

constexpr char kEvents[] = "/recorder/1/events";
constexpr char kCameraList[] = "/recorder/1/cameras";

class Events : public testing::Test {
 protected:
  /// Two cameras, with three changes.
  Events() {
    for (int camera = 0; camera < 2; ++camera)
      recorder_.AddCamera("User", "", 554 + camera, "admin", "x", "1", "/live");
    Note(1, Outcome::kOk, now_ - 2);
    Note(2, Outcome::kTimedOut, now_ - 1);
    Note(1, Outcome::kTimedOut, now_);
  }

  void Note(int camera, Outcome cause, std::int64_t at) const {
    recorder::Records(recorder_.StateFolder()).NoteOutcome(camera, {.cause = cause, .at = at});
  }

  Answer Get(const std::string& path) const { return recorder_.Send("GET", path, recorder_.Login()); }

  /// Asks for events as they come.
  Connection Listen(Headers more = {}, const std::string& query = "") const {
    more.merge(recorder_.Login());
    more.emplace("Accept", "text/event-stream");
    Connection connection(recorder_.Port(), std::chrono::seconds(60));
    connection.Send(HttpRequest("GET", kEvents + query, more));
    return connection;
  }

  const std::int64_t now_ = recorder::SecondsNow();
  const TestRecorder recorder_;
};

TEST_F(Events, ComeInPagesTheNewestFirst) {
  const struct {
    std::string query;
    const char* ids;  // and "next"
  } pages[] = {
      {"", "3 2 1 null"},      {"?limit=2", "3 2 2"},           {"?limit=2&after=2", "1 null"},
      {"?camera=2", "2 null"}, {"?cause=timedOut", "3 2 null"}, {"?since=" + std::to_string(now_), "3 null"},
  };
  for (const auto& page : pages) {
    const Json::Value data = Get(kEvents + page.query).json["data"];
    std::string ids;
    for (const Json::Value& event : data["events"]) ids += event["id"].asString() + ' ';
    EXPECT_EQ(ids + ToText(data["next"]), page.ids) << page.query;
  }
  for (const char* wrong : {"?limit=1001", "?cause=bored", "?after=-1", "?befor=1"}) {
    EXPECT_EQ(Get(kEvents + std::string(wrong)).status, 400) << wrong;
  }
  const Json::Value state = Get(kCameraList).json["data"][0]["state"];
  EXPECT_EQ(state["flips"], 1) << "the first contact is no change";
  EXPECT_TRUE(state["milliseconds"].isNull());
  Headers known = recorder_.Login();
  known.emplace("If-None-Match", HeaderOf(recorder_.Ask("GET", kCameraList, known).head, "ETag"));
  EXPECT_EQ(recorder_.Send("GET", kCameraList, known).status, 304);
  Note(2, Outcome::kOk, now_);
  EXPECT_EQ(recorder_.Send("GET", kCameraList, known).status, 200);
}

TEST_F(Events, AreToldAsTheyComeWithoutKeepingOthersFromTheWorkers) {
  {
    const Connection first = Listen();
    EXPECT_THAT(first.ReceiveUntil("id: 3\n\n"), HasSubstr("text/event-stream"));
    Note(2, Outcome::kOk, now_);
    ASSERT_THAT(first.ReceiveUntil("\n\n\r\n"), HasSubstr(R"("before":"timedOut","camera":2,"cause":"ok","id":4)"));
    EXPECT_THAT(Listen().ReceiveUntil("}}"), HasSubstr("Retry-After: "));
    EXPECT_EQ(Get(kEvents).status, 200);
  }
  const struct {
    const char *known, *query, *until;
  } rows[] = {{"3", "", "}"}, {"999", "", "\n\n"}, {"0", "?cause=busy", "id: 4\n"}};
  for (const auto& row : rows) {
    const auto next = [&] { return Listen({{"Last-Event-ID", row.known}}, row.query).ReceiveUntil(row.until); };
    std::string told = next();
    for (int tries = 0; tries < 300 && told.find(" 503 ") != std::string::npos; ++tries, told = next()) usleep(100'000);
    EXPECT_THAT(told, HasSubstr("id: 4\n")) << "once the one before has gone";
  }
}

}  // namespace
