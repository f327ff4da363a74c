#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "bench/rows.h"
#include "rig/callers.h"
#include "rig/cameras.h"
#include "rig/questions.h"
#include "rig/recorder.h"

namespace bench {

using namespace rig;

namespace {

constexpr int kModelsAFile = 100;
constexpr int kTimes = 5;
/// From one size to the next larger, a time an item grows by no more; the rest is the machine's noise.
constexpr Goal kLinear{.bound = 1.1};

/// One size of a subject, with the median time that an item takes, in milliseconds.
struct Size {
  int items;
  double timeAnItem;
};

std::string Grouped(int number) {
  std::string text = std::to_string(number);
  for (int at = static_cast<int>(text.size()) - 3; at > 0; at -= 3) text.insert(static_cast<std::size_t>(at), ",");
  return text;
}

std::string Figure(const Size& size) { return Grouped(size.items) + ": " + TimeText(size.timeAnItem) + " each"; }

/// The worst step from a size to the next.
void AddGrowth(Report& table, const std::string& name, const std::string& what, const std::vector<Size>& sizes) {
  double worst = 0;
  std::string smaller;
  for (std::size_t i = 0; i + 1 < sizes.size(); ++i) {
    worst = std::max(worst, sizes[i + 1].timeAnItem / sizes[i].timeAnItem);
    smaller += (smaller.empty() ? "" : "; ") + Figure(sizes[i]);
  }
  AddRow(table, name, {what, Figure(sizes.back())}, {"itself, smaller", smaller}, worst, kLinear);
}

/// Median time of an answer; `listOf` picks the list of it, which must have so many items.
template <class Request, class ListOf>
Size TimeList(int items, const Request& request, const ListOf& listOf) {
  std::vector<double> times;
  for (int i = 0; i < kTimes; ++i) {
    std::string body;
    times.push_back(TimeOf([&] { body = request(); }));
    const Json::Value answer = ParseJson(body);
    const auto count = listOf(answer["data"]).size();
    if (count != static_cast<Json::ArrayIndex>(items)) throw WrongAnswer("a list of " + std::to_string(count));
  }
  return {items, Median(times) / items};
}

std::string Ask(const TestRecorder& recorder, const std::string& verb, const std::string& method,
                const std::string& body = "") {
  return recorder.Ask(verb, kApi + method, recorder.Login(), body).body;
}

/// Vendors of 100 models each, all like the first of models/simcam.json.
std::filesystem::path WriteManyModels(const TempFolder& folder, int count) {
  Json::Value file = ParseJson(ReadText(std::filesystem::path(SOURCE_FOLDER) / "models/simcam.json"));
  Json::Value model = file["models"][0];
  for (int vendor = 0; vendor < count / kModelsAFile; ++vendor) {
    file["vendor"] = "Vendor" + std::to_string(vendor);
    file["models"] = Json::Value(Json::arrayValue);
    for (int i = 0; i < kModelsAFile; ++i) {
      model["name"] = "M" + std::to_string(i);
      file["models"].append(model);
    }
    folder.Write(file["vendor"].asString() + ".json", ToText(file));
  }
  CopySchema(folder);
  return folder.Path();
}

void AddModelRows(Report& table) {
  constexpr int kCounts[] = {100, 1000, 10'000};
  std::vector<Size> warm;
  std::vector<Size> cold;
  for (const int count : kCounts) {
    const TempFolder folder;
    const TestRecorder recorder({.modelsFolder = WriteManyModels(folder, count)});
    const int builtIn = 3;  // "ONVIF", "PSIA" and "User"
    const auto list = [](const Json::Value& data) { return data["cameraModel"]; };
    const auto perModel = [&](Size size) { return Size{count, size.timeAnItem * size.items / count}; };
    cold.push_back(perModel(TimeList(
        count + builtIn,
        [&] {
          return recorder.Control({"call", "CameraModelEnum"}).output;
        },
        list)));
    Ask(recorder, "GET", "CameraModelEnum");
    Ask(recorder, "GET", "CameraModelEnum");
    warm.push_back(perModel(TimeList(
        count + builtIn, [&] { return Ask(recorder, "GET", "CameraModelEnum"); }, list)));
  }
  AddGrowth(table, "growth, model list, warm", "CameraModelEnum over HTTP", warm);
  AddGrowth(table, "growth, model list, cold", "recorderctl call CameraModelEnum", cold);
}

void Import(const TestRecorder& recorder, int first, int end) {
  const TempFolder folder;
  std::string csv = "name,vendor,model,channel,host,port,user,password\n";
  for (int i = first; i < end; ++i) {
    csv +=
        "camera " + std::to_string(i) + ",Simcam,RTSP-H264,1,127.0.0.1," + std::to_string(1024 + i) + ",admin,secret\n";
  }
  const auto finished = recorder.Control({"camera", "import", folder.Write("cameras.csv", csv).string()});
  if (finished.status != 0) throw WrongAnswer(finished.output);
}

void AddCameraRow(Report& table) {
  constexpr int kCounts[] = {10, 100, 1000, 10'000};
  const TestRecorder recorder;
  std::vector<Size> sizes;
  int stored = 0;
  for (const int count : kCounts) {
    Import(recorder, stored, count);
    stored = count;
    sizes.push_back(TimeList(
        count, [&] { return Ask(recorder, "GET", "EnumExistedCamCap"); },
        [](const Json::Value& data) { return data["camCap"]; }));
  }
  AddGrowth(table, "growth, stored cameras", "EnumExistedCamCap over HTTP", sizes);
}

void AddListRow(Report& table) {
  constexpr int kCounts[] = {10, 100, 1000};
  constexpr int kCameras = 20;
  Json::Value configs(Json::arrayValue);
  for (int i = 0; i < kCameras; ++i) {
    Json::Value camera;
    camera["server"] = "scripted";
    configs.append(Camera(std::to_string(i), camera));
  }
  const SimCameras cameras(configs);
  const TestRecorder recorder;
  std::vector<Size> sizes;
  for (const int count : kCounts) {
    Json::Value rows(Json::arrayValue);
    for (int i = 0; i < count; ++i) {
      rows.append(BatchRow(std::to_string(i), cameras.Port(std::to_string(i % kCameras)), kSecret));
    }
    const std::string body = ToText(Batch(rows));
    sizes.push_back(TimeList(
        count, [&] { return Ask(recorder, "POST", "CamBatAddVerify", body); },
        [](const Json::Value& data) {
          for (const Json::Value& row : data["resultList"]) {
            if (row["result"] != 0) throw WrongAnswer("a camera that failed: " + ToText(row));
          }
          return data["resultList"];
        }));
  }
  AddGrowth(table, "growth, list of cameras", "CamBatAddVerify over HTTP", sizes);
}

}  // namespace

void AddGrowthRows(Report& table) {
  AddModelRows(table);
  AddCameraRow(table);
  AddListRow(table);
}

}  // namespace bench
