#include <algorithm>
#include <future>
#include <string>
#include <vector>

#include "bench/rows.h"
#include "rig/cameras.h"
#include "rig/recorder.h"

namespace bench {

using namespace rig;

namespace {

constexpr int kGroups = 20;
constexpr int kGroupSize = 10;  // as many as are tested side by side
constexpr int kSilentGroups[] = {5, 13};
constexpr int kSilent = 2 * kGroupSize;
constexpr int kSilentCode = 463;
constexpr int kTestMs = 5000;
constexpr int kRuns = 3;
constexpr Goal kGoal{.bound = 1.05};

bool IsSilent(int group) {
  return std::find(std::begin(kSilentGroups), std::end(kSilentGroups), group) != std::end(kSilentGroups);
}

Json::Value ListedCameras() {
  Json::Value cameras(Json::arrayValue);
  for (int i = 0; i < kGroups * kGroupSize; ++i) {
    Json::Value camera;
    camera["server"] = "scripted";
    if (IsSilent(i / kGroupSize)) camera["fault"] = "silentAfterConnect";
    cameras.append(Camera(std::to_string(i), camera));
  }
  return cameras;
}

/// The cameras in a list, and each of them on its own.
class Trial {
 public:
  Trial() : cameras_(ListedCameras()), recorder_({.testMs = kTestMs, .workers = kSilent + 1}) {}

  /// All in one list.
  double AskList() const {
    Json::Value rows(Json::arrayValue);
    for (int i = 0; i < kGroups * kGroupSize; ++i) {
      rows.append(BatchRow(std::to_string(i), PortOf(i), kSecret));
    }
    Reply reply;
    const double time = TimeOf([&] { reply = Ask("CamBatAddVerify", Batch(rows)); });
    const Json::Value results = ParseJson(reply.body)["data"]["resultList"];
    if (results.size() != rows.size()) throw WrongAnswer("a list of " + std::to_string(results.size()) + " cameras");
    for (int i = 0; i < kGroups * kGroupSize; ++i) CheckCode(i, RowCode(results[i]));
    return time;
  }

  /// The slowest camera's time of each group, added up. Cameras that answer are asked one after another; silent ones,
  /// which cost no work, all at once.
  double AskEach() const {
    std::vector<std::future<double>> times;
    for (int i = 0; i < kGroups * kGroupSize; ++i) {
      const auto policy = IsSilent(i / kGroupSize) ? std::launch::async : std::launch::deferred;
      times.push_back(std::async(policy, [this, i] { return TestOne(i); }));
    }
    double sum = 0;
    for (auto time = times.begin(); time != times.end();) {
      double slowest = 0;
      for (int i = 0; i < kGroupSize; ++i) slowest = std::max(slowest, (time++)->get());
      sum += slowest;
    }
    return sum;
  }

 private:
  int PortOf(int camera) const { return cameras_.Port(std::to_string(camera)); }

  Reply Ask(const std::string& method, const Json::Value& parameters) const {
    return recorder_.Ask("POST", kApi + method, recorder_.Login(), ToText(parameters));
  }

  double TestOne(int camera) const {
    const Json::Value parameters = CameraParams(PortOf(camera), kSecret);
    Reply reply;
    const double time = TimeOf([&] { reply = Ask("CameraTest", parameters); });
    CheckCode(camera, ErrorCode(ParseJson(reply.body)));
    return time;
  }

  static void CheckCode(int camera, int code) {
    const int right = IsSilent(camera / kGroupSize) ? kSilentCode : 0;
    if (code != right) throw WrongAnswer("camera " + std::to_string(camera) + " has code " + std::to_string(code));
  }

  const SimCameras cameras_;
  const TestRecorder recorder_;
};

}  // namespace

void AddBatchRow(Report& table) {
  const Trial trial;
  AddRow(table, "batch, 200 cameras, 20 of them silent", "CamBatAddVerify", "each group's slowest camera on its own",
         Compare([&] { return trial.AskList(); }, [&] { return trial.AskEach(); }, kRuns), kGoal);
}

}  // namespace bench
