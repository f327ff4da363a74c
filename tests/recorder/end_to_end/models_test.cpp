#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <utility>

#include "rig/callers.h"
#include "rig/cameras.h"
#include "rig/questions.h"

// Every entry of models/, played by simulated cameras that read the files by themselves, and asked for over HTTP.

using namespace rig;

namespace {

constexpr std::size_t kCallers = 8;
constexpr int kNoSuchStream = 465;
constexpr char kTypedPath[] = "/stream1";  // where a simulated camera is whose path the user gives

/// An entry of a file, as a camera that is set to one of its codecs.
struct Played {
  std::string file;
  std::string vendor;
  Json::Value model;
  Json::Value codec;  // empty where the file does not know its codecs

  std::string Name() const { return vendor + " " + model["name"].asString(); }
  std::string CameraName() const { return Name() + ", " + codec.get("name", "some codec").asString(); }
};

std::vector<Played> ReadModels() {
  std::vector<Played> all;
  for (const auto& entry : std::filesystem::directory_iterator(SOURCE_FOLDER "/models")) {
    const Json::Value file = ParseJson(ReadText(entry.path()));
    if (!file.isMember("vendor")) continue;  // the schema
    for (const Json::Value& model : file["models"]) {
      Json::Value codecs = model["codecs"];
      if (codecs.empty()) codecs.append(Json::Value(Json::objectValue));
      for (const Json::Value& codec : codecs) {
        all.push_back({entry.path(), file["vendor"].asString(), model, codec});
      }
    }
  }
  return all;
}

Json::Value CameraOf(const Played& played) {
  Json::Value camera;
  camera["model"]["file"] = played.file;
  camera["model"]["name"] = played.model["name"];
  if (!played.codec.empty()) camera["model"]["codec"] = played.codec["name"];
  return Camera(played.CameraName(), camera);
}

/// The files' ports, such as 554, are no test's to listen on. Without a port, that of the user counts.
void LeaveOutPorts(Json::Value& json) {
  if (json.isObject()) json.removeMember("port");
  if (json.isObject() || json.isArray()) {
    for (Json::Value& member : json) LeaveOutPorts(member);
  }
}

/// Copies all of them to `folder` without their ports, all else untouched.
void CopyShippedModels(const TempFolder& folder) {
  CopySchema(folder);
  for (const auto& entry : std::filesystem::directory_iterator(SOURCE_FOLDER "/models")) {
    Json::Value file = ParseJson(ReadText(entry.path()));
    if (!file.isMember("vendor")) continue;  // the schema
    LeaveOutPorts(file);
    folder.Write(entry.path().filename(), ToText(file));
  }
}

/// The path of a stream in a file, for a channel that is a number.
std::string PathOf(const Json::Value& entry, long channel) {
  const std::string stream = entry.get("stream", "main").asString();
  const int number = stream == "main" ? 1 : stream == "sub" ? 2 : 3;
  std::string path = entry.get("path", kTypedPath).asString();
  for (const auto& [word, value] : {std::pair<std::string, std::string>("{channel}", std::to_string(channel)),
                                    {"{channel0}", std::to_string(channel - 1)},
                                    {"{channel:02}", (channel < 10 ? "0" : "") + std::to_string(channel)},
                                    {"{stream}", std::to_string(number)},
                                    {"{stream0}", std::to_string(number - 1)}}) {
    for (std::size_t at = path.find(word); at != std::string::npos; at = path.find(word)) {
      path.replace(at, word.size(), value);
    }
  }
  return path;
}

/// Makes the questions about one camera.
class Asking {
 public:
  Asking(const TestRecorder& recorder, const SimCameras& cameras, const Played& played,
         std::vector<Question>& questions)
      : login_(recorder.Login()), played_(played), questions_(questions) {
    params_ = CameraParams(cameras.Port(played.CameraName()), kSecret, played.Name());
    params_["channel"] = params_["camChannel"] = played.model["channels"]["default"];
    params_["camVideoType"] = played.codec.get("name", "");
    params_["camStreamingType"] = played.codec.empty() ? "" : played.codec["streamTypes"][0];
    params_["camSourcePath"] = kTypedPath;
  }

  void AskAll() {
    Ask("CamCap", "document", [codecs = played_.model["codecs"].size()](const Answer& answer) {
      return answer.json["data"]["camCap"][0]["videoCapList"].size() == codecs;
    });
    const Json::Value& stream = played_.model["stream"];
    const long channel = std::strtol(params_["camChannel"].asCString(), nullptr, 10);
    const std::string path = PathOf(stream, channel);
    AskStream("main " + path);
    params_["camChannel"] = LastChannel();
    AskCode("CameraTest", "main " + path + ", channel " + params_["camChannel"].asString());
    params_["camModel"] = "User ";
    for (const Json::Value& other : stream["others"]) AskOther(other, channel);
    params_["camSourcePath"] = path + "/";
    AskCode("CameraTest", "with a slash too many, " + path, kNoSuchStream);
  }

 private:
  /// Where the file does not count them, the second.
  std::string LastChannel() const {
    const Json::Value& channels = played_.model["channels"];
    const Json::Value& values = channels["values"];
    return channels["others"].asBool() ? "2" : values[values.size() - 1].asString();
  }

  /// At its exact path, as a user would who knows nothing but that.
  void AskOther(const Json::Value& other, long channel) {
    if (other.isMember("codec") && other["codec"] != played_.codec["name"]) return;
    params_["camStreamingType"] = other.get("over", "RTSP");
    params_["camSourcePath"] = PathOf(other, channel);
    AskStream(other.get("stream", "main").asString() + " " + params_["camSourcePath"].asString());
  }

  void AskStream(const std::string& what) {
    AskCode("CameraTest", what);
    AskCode("GetSnapshot", what);
  }

  void AskCode(const std::string& method, const std::string& what, int code = 0) {
    Ask(method, what, [method, code](const Answer& answer) { return CodeIn(answer, method) == code; });
  }

  void Ask(const std::string& method, const std::string& what, std::function<bool(const Answer&)> isRight) {
    questions_.push_back(
        {method, HttpRequest("POST", kApi + method, login_, ToText(params_)),
         [name = played_.CameraName() + ", " + what, isRight = std::move(isRight)](const Reply& reply) {
           const Answer answer(reply);
           return isRight(answer) ? "" : name + ": " + answer.cause + " " + answer.body.substr(0, 50);
         }});
  }

  const Headers login_;
  const Played& played_;
  std::vector<Question>& questions_;
  Json::Value params_;
};

/// The recorder's list, without what no file describes.
std::size_t CountListed(const TestRecorder& recorder) {
  std::size_t count = 0;
  const Answer list = recorder.Get("CameraModelEnum");
  for (const Json::Value& row : list.json["data"]["cameraModel"]) {
    const std::string vendor = row["vendor"].asString();
    count += vendor == "User" || vendor == "ONVIF" || vendor == "PSIA" ? 0 : 1;
  }
  return count;
}

}  // namespace

TEST(Models, OfEveryFileAreListedReachedAndShown) {
  const TempFolder folder;
  CopyShippedModels(folder);
  const std::vector<Played> all = ReadModels();
  Json::Value configs(Json::arrayValue);
  std::set<std::string> names;
  for (const Played& played : all) {
    configs.append(CameraOf(played));
    names.insert(played.Name());
  }
  const SimCameras cameras(configs);
  const TestRecorder recorder({.workers = 4, .modelsFolder = folder.Path()});
  EXPECT_EQ(CountListed(recorder), names.size()) << recorder.Log();

  std::vector<Question> questions;
  for (const Played& played : all) Asking(recorder, cameras, played, questions).AskAll();
  std::atomic<std::size_t> next = 0;
  const std::vector<Callers::Source> sources(kCallers, [&] { return questions[next++]; });
  const Tally tally = Callers(recorder.Port(), sources, static_cast<long>(questions.size())).Wait();
  EXPECT_EQ(static_cast<std::size_t>(tally.answered), questions.size());
  for (const std::string& trouble : tally.troubles) ADD_FAILURE() << trouble;
}
