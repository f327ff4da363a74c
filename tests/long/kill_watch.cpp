// long_kill_watch: kill -9 of recorder-watch, its copies, workers and the recorder at random moments, while stored
// cameras are checked and the rows of runs tested, many of them with a wrong password. The cameras count the logins.

#include <algorithm>
#include <chrono>
#include <functional>
#include <future>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "recorder/utility/clock.h"
#include "tests/long/kill_trial.h"
#include "tests/long/watched.h"

namespace long_tests {

using namespace rig;

namespace {

using recorder::Clock;
using std::chrono::milliseconds;

constexpr int kGood = 4;               // stored with the right password
constexpr int kWrong = 6;              // with a wrong one
constexpr int kLongestPrelude = 1500;  // milliseconds
constexpr std::chrono::seconds kPatience{60};
constexpr char kWrongPassword[] = "a wrong password";

constexpr VictimKind kWatchVictims[] = {
    {Victim::kWatch, "recorder-watch", 7},
    {Victim::kChecker, "a copy of it", 6},
    {Victim::kWorker, "worker", 4},
    {Victim::kServe, "recorderctl serve", 3},
};

class Trial : private KillTrial {
 public:
  explicit Trial(const KillOptions& options)
      : KillTrial("Kills while cameras are watched", options, {.testMs = 10'000, .watchSeconds = 1}),
        cameras_(Configs()) {}

  int Run() {
    StoreAll();
    RunRounds(kWatchVictims, [this](Victim victim) { Round(victim); });
    JudgeStates();
    Summarize();
    return report_.ExitStatus();
  }

 private:
  static std::string Name(int number) { return "camera " + std::to_string(number); }

  /// They count a wrong login at once and refuse it late: a kill often comes in between.
  static Json::Value Configs() {
    Json::Value more;
    more["login"]["offer"].append("digest-md5");
    more["login"]["slowRefusal"] = true;
    Json::Value configs(Json::arrayValue);
    for (int i = 0; i < kGood + kWrong; ++i) configs.append(CheapCamera(Name(i), i, more));
    return configs;
  }

  Json::Value Row(int camera, const std::string& user, const std::string& password) const {
    return LoginRow(AddressOf(camera), cameras_.Port(Name(camera)), user, password);
  }

  void StoreAll() {
    for (int i = 0; i < kGood + kWrong; ++i) {
      const bool isGood = i < kGood;
      const std::string user = isGood ? "admin" : "first";
      ids_.push_back(Store(recorder_, Name(i), Row(i, user, isGood ? kSecret : kWrongPassword)));
    }
    AwaitGood();
  }

  /// One whose very first check is cut off would be left alone for an hour.
  void AwaitGood() const {
    const auto countGood = [this] {
      const std::vector<Event> events = EventsAfter(recorder_, 0);
      return std::ranges::count(events, "ok", &Event::cause);
    };
    for (const auto end = Clock::now() + kPatience; countGood() < kGood && Clock::now() < end;) {
      std::this_thread::sleep_for(milliseconds(50));
    }
  }

  /// Asks until there is an answer that is no failure of the recorder's, as one does while it is started again.
  Answer Insist(const std::string& verb, const std::string& path, const std::function<Json::Value()>& body) const {
    for (const auto end = Clock::now() + kPatience; Clock::now() < end; std::this_thread::sleep_for(milliseconds(20))) {
      try {
        Answer answer = Ask(recorder_, verb, path, body());
        if (answer.status < 500) return answer;
      } catch (const NoAnswer&) {
      }
    }
    throw std::runtime_error("no answer to " + verb + " " + path);
  }
  Answer Insist(const std::string& verb, const std::string& path, const Json::Value& body = {}) const {
    return Insist(verb, path, [&] { return body; });
  }

  /// Half of the stored cameras with a wrong login get another wrong one, at each try a new one.
  void EditSome() {
    for (int i = kGood + round_ % 2; i < kGood + kWrong; i += 2) {
      const std::string path = "cameras/" + std::to_string(ids_[static_cast<std::size_t>(i)]);
      const auto change = [&] {
        Json::Value wanted;
        wanted["user"] = "stored " + std::to_string(++users_);
        wanted["password"] = kWrongPassword;
        return wanted;
      };
      const Answer answer = Insist("PATCH", path, change);
      Expect(answer.status == 200, "an edit was answered by " + answer.head);
    }
  }

  /// To each camera twice the right login, and twice the same wrong one.
  Json::Value Rows() const {
    Json::Value rows(Json::arrayValue);
    for (int i = 0; i < kGood + kWrong; ++i) {
      for (const char* channel : {"1", ""}) {
        rows.append(Row(i, "admin", kSecret))["channel"] = channel;
        rows.append(Row(i, "run " + std::to_string(round_), kWrongPassword))["channel"] = channel;
      }
    }
    return rows;
  }

  /// Returns the address of the run.
  std::string StartRun() {
    std::string run = "runs/" + Insist("POST", "runs", Json::objectValue).json["data"]["id"].asString();
    const Json::Value rows = Rows();
    Json::Value body;
    for (Json::ArrayIndex i = 0; i < rows.size(); i += 2) {
      body["after"] = i;
      body["rows"] = List({rows[i], rows[i + 1]});
      const Answer added = Insist("POST", run + "/rows", body);
      const bool isThere = added.status == 200 || Insist("GET", run).json["data"]["rows"].asUInt() == i + 2;
      Expect(isThere, "rows were refused: " + added.body);
    }
    const Answer started = Insist("POST", run + "/start", Json::objectValue);
    Expect(started.status == 200 || Insist("GET", run).json["data"]["state"] != "open", started.body);
    return run;
  }

  void Round(Victim victim) {
    std::future<std::string> run = std::async(std::launch::async, [this] {
      EditSome();
      return StartRun();
    });
    const std::vector<ProcessInfo> servers = StrikeWithin(kLongestPrelude, victim);
    if (victim == Victim::kServe) StartAgain(servers, kPatience);
    JudgeRun(run.get());
    JudgeCameras();
    JudgeEvents();
  }

  Json::Value RowsOf(const std::string& run) const {
    return Insist("GET", run + "/rows?limit=1000").json["data"]["rows"];
  }

  void JudgeRun(const std::string& run) {
    const auto end = Clock::now() + kPatience;
    while (Insist("GET", run).json["data"]["state"] != "ended" && Clock::now() < end) {
      std::this_thread::sleep_for(milliseconds(50));
    }
    const Json::Value rows = RowsOf(run);
    const Json::Value sent = Rows();
    Expect(rows.size() == sent.size(), std::to_string(rows.size()) + " rows of " + std::to_string(sent.size()));
    for (Json::ArrayIndex i = 0; i < rows.size(); ++i) JudgeRow(rows[i], static_cast<int>(i) + 1, sent[i]);
    Expect(lastRun_.empty() || RowsOf(lastRun_) == lastRows_, "results of the run before have changed");
    lastRun_ = run;
    lastRows_ = rows;
    ForgetOthers();
  }

  void JudgeRow(const Json::Value& row, int number, const Json::Value& sent) {
    const bool isSame = row["number"] == number && row["host"] == sent["host"] && row["user"] == sent["user"];
    Expect(isSame, "a row is another one: " + ToText(row));
    const std::string cause = row["cause"].isNull() ? "none" : row["cause"].asString();
    const bool isRight = cause == "unknown" || cause == (sent["user"] == "admin" ? "ok" : "loginRefused");
    Expect(isRight, "a row came to " + cause + ": " + ToText(row));
    ++results_[cause];
  }

  /// One that was opened while its answer was lost, and those before the last one.
  void ForgetOthers() const {
    const Json::Value runs = Insist("GET", "runs").json["data"];
    for (const Json::Value& run : runs) {
      const std::string path = "runs/" + run["id"].asString();
      if (path == lastRun_) continue;
      Insist("DELETE", path);
      if (run["state"] == "open") Insist("DELETE", path);  // cancelled, and then forgotten
    }
  }

  void JudgeCameras() {
    refused_ = 0;
    logins_ = 0;
    for (int i = 0; i < kGood + kWrong; ++i) {
      const Json::Value log = cameras_.Log(Name(i));
      logins_ += log["logins"].asInt();
      for (const std::string& user : log["refusedUsers"].getMemberNames()) {
        const int count = log["refusedUsers"][user].asInt();
        refused_ += count;
        if (count == 1 || !again_.insert(Name(i) + user).second) continue;
        Expect(false, Name(i) + " refused \"" + user + "\" " + std::to_string(count) + " times");
      }
    }
  }

  void JudgeEvents() {
    for (const Event& event : EventsAfter(recorder_, lastEvent_)) {
      ++events_;
      lastEvent_ = event.id;
      std::string& last = lastCauses_[event.camera];
      const bool isEdited = event.before.empty() && event.camera >= ids_[kGood];
      const bool follows = isEdited || (event.before == last && event.cause != last);
      Expect(follows, "camera " + std::to_string(event.camera) + ": an event from " + event.before + " to " +
                          event.cause + " after " + last);
      last = event.cause;
    }
    const Json::Value cameras = Insist("GET", "cameras").json["data"];
    Expect(cameras.size() == ids_.size(), "there are " + std::to_string(cameras.size()) + " cameras");
  }

  /// What the watch knows in the end: of a check that was cut off, nothing.
  void JudgeStates() {
    std::this_thread::sleep_for(std::chrono::seconds(3));
    const Json::Value cameras = Insist("GET", "cameras").json["data"];
    for (Json::ArrayIndex i = 0; i < cameras.size(); ++i) {
      const Json::Value& state = cameras[i]["state"];
      const std::string cause = state.isNull() ? "none" : state["cause"].asString();
      const bool isGood = static_cast<int>(i) < kGood;
      Expect(isGood ? cause == "ok" : cause == "loginRefused" || cause == "none",
             Name(static_cast<int>(i)) + " is " + cause);
    }
  }

  void Summarize() {
    NoteKills();
    std::string text;
    for (const auto& [cause, count] : results_) text += ", " + cause + " " + std::to_string(count);
    report_.Note("rows of runs" + text);
    report_.Note(std::to_string(events_) + " events; the cameras counted " + std::to_string(logins_) + " logins, " +
                 std::to_string(refused_) + " refused");
    report_.Promise(report_.ExitStatus() == 0, "no row lost, no result twice, no refused login tried again");
  }

  const SimCameras cameras_;
  std::vector<int> ids_;  // of stored cameras
  int users_ = 0;         // made up so far
  std::map<std::string, int> results_;
  std::string lastRun_;
  Json::Value lastRows_;
  std::map<int, std::string> lastCauses_;
  std::int64_t lastEvent_ = 0;
  int events_ = 0;
  int logins_ = 0;
  int refused_ = 0;
  std::set<std::string> again_;  // logins that were refused more than once
};

}  // namespace

}  // namespace long_tests

int main(int argc, char** argv) {
  const char about[] = "Kills the processes of a recorder that watches cameras, and looks what is left.";
  return long_tests::RunKills(argc, argv, "long_kill_watch", about,
                              [](const auto& options) { return long_tests::Trial(options).Run(); });
}
