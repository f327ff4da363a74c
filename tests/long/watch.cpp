// long_watch: hours in which a recorder watches 200 simulated cameras, in minutes.

#include <algorithm>
#include <chrono>
#include <iostream>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "recorder/utility/clock.h"
#include "rig/command_line.h"
#include "rig/report.h"
#include "tests/long/watched.h"

namespace long_tests {

using namespace rig;

namespace {

using recorder::Clock;

constexpr int kCameras = 200;
constexpr int kSilent = 20;
constexpr int kFlapping = 10;
constexpr int kLocking = 5;
constexpr int kSlow = 10;  // each stored thrice: a check lasts so long that another one of that host comes meanwhile
constexpr int kRecordsOfSlow = 3;
constexpr int kIntervalSeconds = 300;
constexpr std::chrono::milliseconds kLookAgain{200};
constexpr char kWrong[] = "a wrong password";

struct Options {
  int hours = 3;
  int speed = 40;
};

using Causes = std::vector<std::string>;

std::string TextOf(const Causes& causes) {
  std::string text;
  for (const std::string& cause : causes) text += (text.empty() ? "" : " ") + cause;
  return text.empty() ? "nothing" : text;
}

/// Goes down and comes up again, between two checks where these are in time, as soon as the last change was told, but
/// never before some checks have seen it.
class Flapper {
 public:
  Flapper(std::string name, int firstTurn) : name_(std::move(name)), nextTurn_(firstTurn) {}

  const Causes& Expected() const { return expected_; }

  /// `turn`: intervals since the beginning. `isLast`: it stays as it is, once it is up.
  void Step(const SimCameras& cameras, const Causes& told, int turn, bool isLast) {
    constexpr int kDown = 3;
    constexpr int kUp = 4;
    constexpr int kNoticed = 12;  // at the latest
    const bool isDue = turn >= nextTurn_ && (told.size() >= expected_.size() || turn >= nextTurn_ + kNoticed);
    const bool isUp = expected_.back() == "ok";
    if (!isDue || (isUp && isLast)) return;
    isUp ? cameras.TakeDown(name_) : cameras.BringUp(name_);
    expected_.emplace_back(isUp ? "timedOut" : "ok");
    nextTurn_ = turn + (isUp ? kDown : kUp);
  }

 private:
  const std::string name_;
  int nextTurn_;
  Causes expected_ = {"ok"};
};

class Trial {
 public:
  explicit Trial(const Options& options)
      : options_(options),
        cameras_(Configs()),
        recorder_(std::in_place, TestRecorder::Options{.watchSeconds = kIntervalSeconds, .watchSpeed = options.speed}) {
  }

  int Run() {
    report_.Heading("Watching " + std::to_string(kCameras) + " cameras for " + std::to_string(options_.hours) +
                    " hours, " + std::to_string(options_.speed) + " times as fast");
    StoreAll();
    WatchFor(Intervals() / 2);
    EditSome();
    WatchFor(Intervals());
    recorder_.reset();
    JudgeEvents();
    JudgeCameras();
    return report_.ExitStatus();
  }

 private:
  static std::string Name(const char* kind, int number) { return kind + std::string(" ") + std::to_string(number); }

  static Json::Value Configs() {
    Json::Value configs(Json::arrayValue);
    const auto add = [&configs](const char* kind, int count, const Json::Value& more) {
      for (int i = 0; i < count; ++i) {
        configs.append(CheapCamera(Name(kind, i), static_cast<int>(configs.size()), more));
      }
    };
    Json::Value slow;
    slow["stream"]["gop"] = 25;
    slow["stream"]["start"] = 2.4;  // seconds, so that the turns of two records are nearer to each other
    add("silent", kSilent, Faulty("", "silentAfterConnect"));
    add("flapping", kFlapping, {});
    add("locking", kLocking, Faulty("", "lockOut"));
    add("slow", kSlow, slow);
    add("steady", kCameras - static_cast<int>(configs.size()), {});
    return configs;
  }

  void StoreAll() {
    const Json::Value configs = Configs();
    for (Json::ArrayIndex i = 0; i < configs.size(); ++i) {
      const std::string name = configs[i]["name"].asString();
      const bool isSlow = name.starts_with("slow");
      const Json::Value row = LoginRow(AddressOf(static_cast<int>(i)), cameras_.Port(name), "admin",
                                       name.starts_with("locking") ? kWrong : kSecret);
      for (int times = 0; times < (isSlow ? kRecordsOfSlow : 1); ++times) AddRecord(name, row);
    }
    start_ = Clock::now();
  }

  void AddRecord(const std::string& name, const Json::Value& row) {
    const int id = Store(*recorder_, name, row);
    names_[id] = name;
    expected_[id] = {name.starts_with("silent") ? "timedOut" : name.starts_with("locking") ? "loginRefused" : "ok"};
    if (name.starts_with("locking")) locking_.push_back(id);
    if (name.starts_with("flapping")) flappers_.emplace(id, Flapper(name, 2 + static_cast<int>(flappers_.size()) % 4));
  }

  int Intervals() const { return options_.hours * 3600 / kIntervalSeconds; }
  int Turn() const {
    const std::chrono::duration<double> passed = Clock::now() - start_;
    return static_cast<int>(passed.count() * options_.speed / kIntervalSeconds);
  }

  void WatchFor(int turns) {
    constexpr int kLongestCycle = 12;
    for (int turn = Turn(); turn < turns; turn = Turn()) {
      TakeEvents();
      for (auto& [id, flapper] : flappers_) flapper.Step(cameras_, told_[id], turn, turn + kLongestCycle > Intervals());
      std::this_thread::sleep_for(kLookAgain);
    }
    TakeEvents();
  }

  void TakeEvents() {
    for (const Event& event : EventsAfter(*recorder_, lastEvent_)) {
      told_[event.camera].push_back(event.cause);
      if (!event.before.empty() && event.before == event.cause) ++doubled_;
      lastEvent_ = event.id;
    }
  }

  void Edit(int id, const char* member, const Json::Value& value) {
    Json::Value change;
    change[member] = value;
    const Answer answer = Ask(*recorder_, "PATCH", "cameras/" + std::to_string(id), change);
    if (answer.status != 200) throw std::runtime_error(answer.head + answer.body);
  }

  /// Only another password may bring another login.
  void EditSome() {
    Edit(locking_[0], "name", "renamed");
    Edit(locking_[1], "password", "another wrong one");
    expected_[locking_[1]].emplace_back("loginRefused");
    Edit(locking_[2], "password", kSecret);
    expected_[locking_[2]].emplace_back("ok");
    Edit(locking_[3], "enabled", false);
    Edit(locking_[3], "enabled", true);
  }

  void JudgeEvents() {
    std::map<std::string, int> counts;
    int wrong = 0;
    for (auto& [id, flapper] : flappers_) expected_[id] = flapper.Expected();
    for (const auto& [id, causes] : expected_) {
      for (const std::string& cause : told_[id]) ++counts[cause];
      if (told_[id] == causes) continue;
      ++wrong;
      report_.Note(names_[id] + ": happened " + TextOf(causes) + "; told " + TextOf(told_[id]));
    }
    std::string text;
    for (const auto& [cause, count] : counts) text += ", " + cause + " " + std::to_string(count);
    report_.Promise(wrong == 0 && doubled_ == 0,
                    "the events of " + std::to_string(expected_.size() - static_cast<std::size_t>(wrong)) + " of " +
                        std::to_string(expected_.size()) + " stored cameras are what happened, in order" + text);
  }

  int RefusalsOf(const std::string& name) const {
    if (!name.starts_with("locking")) return 0;
    return name == names_.at(locking_[1]) ? 2 : 1;
  }

  void JudgeCameras() {
    int most = 0;
    int refused = 0;
    int surplus = 0;
    std::map<std::string, int> connections;  // by kind
    std::vector<int> checks;                 // of a camera that is well
    for (const Json::Value& config : Configs()) {
      const std::string name = config["name"].asString();
      const Json::Value log = cameras_.Log(name);
      refused += log["refusedLogins"].asInt();
      surplus += std::max(0, log["refusedLogins"].asInt() - RefusalsOf(name));
      connections[name.substr(0, name.find(' '))] += log["connections"].asInt();
      if (name.starts_with("steady")) checks.push_back(log["sessions"].asInt());
      if (!name.starts_with("flapping")) most = std::max(most, log["mostConnections"].asInt());  // those the trial asks
    }
    report_.Promise(surplus == 0, "refused logins: " + std::to_string(refused) + " of " + std::to_string(kLocking) +
                                      " cameras and one edit; " + std::to_string(surplus) + " too many");
    report_.Promise(most == 1, "most connections at once at a host: " + std::to_string(most));
    TellChecks(checks, connections);
  }

  void TellChecks(std::vector<int>& checks, const std::map<std::string, int>& connections) {
    std::sort(checks.begin(), checks.end());
    const int ideal = Intervals();
    report_.Promise(2 * checks.front() >= ideal, "checks of a steady camera: " + std::to_string(checks.front()) +
                                                     " to " + std::to_string(checks.back()) + ", of " +
                                                     std::to_string(ideal) + " intervals");
    int all = 0;
    std::string text;
    for (const auto& [kind, count] : connections) {
      all += count;
      text += ", " + kind + " " + std::to_string(count);
    }
    report_.Note(std::to_string(all) + " contacts in all" + text);
  }

  const Options options_;
  Report report_;
  const SimCameras cameras_;
  std::optional<TestRecorder> recorder_;
  Clock::time_point start_;
  std::map<int, std::string> names_;  // of stored cameras
  std::vector<int> locking_;
  std::map<int, Flapper> flappers_;
  std::map<int, Causes> expected_;
  std::map<int, Causes> told_;
  std::int64_t lastEvent_ = 0;
  int doubled_ = 0;
};

}  // namespace

}  // namespace long_tests

int main(int argc, char** argv) {
  long_tests::Options options;
  const char about[] = "Watches simulated cameras by a fast clock, all on loopback addresses.";
  const std::vector<rig::ProgramOption> known{
      {"--hours", &options.hours, "", 2, 1000},
      {"--speed", &options.speed, "hours in one; an interval has to be longer than a silent check", 1, 50}};
  if (const auto status = rig::ReadCommandLine("long_watch", about, known, argc, argv)) return *status;
  try {
    return long_tests::Trial(options).Run();
  } catch (const std::exception& error) {
    std::cerr << "long_watch: " << error.what() << "\n";
    return 1;
  }
}
