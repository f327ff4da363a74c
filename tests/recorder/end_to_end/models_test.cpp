#include <gtest/gtest.h>

#include "rig/cameras.h"

using namespace rig;

namespace {

constexpr char kUserPath[] = "/path";

/// The path of "stream" or "snapshot" for the default channel, the first stream and the preferred setting.
std::string PathOf(const Json::Value& model, const char* what) {
  const Json::Value& settings = model["snapshot"]["settings"][model["codecs"][0]["name"].asString()];
  const std::pair<std::string, Json::Value> values[] = {
      {"{channel}", model["channels"]["default"]}, {"{stream}", "1"}, {"{setting}", settings[0]}};
  std::string path = model[what].get("path", kUserPath).asString();
  for (const auto& [placeholder, value] : values) {
    const std::size_t at = path.find(placeholder);
    if (at != std::string::npos) path.replace(at, placeholder.size(), value.asString());
  }
  return path;
}

std::string NameOf(const Json::Value& model) { return model["vendor"].asString() + " " + model["name"].asString(); }

/// A camera that has nothing but what the model says, and where the model says.
Json::Value CameraOf(const Json::Value& model) {
  const std::map<std::string, const char*> codecs = {
      {"H.264", "h264"}, {"H.265", "h265"}, {"MPEG4", "mpeg4"}, {"MJPEG", "jpeg"}};
  const std::string snapshot = PathOf(model, "snapshot");
  Json::Value camera;
  camera["stream"]["codec"] = codecs.at(model["codecs"][0]["name"].asString());
  camera["stream"]["path"] = PathOf(model, "stream");
  camera["mjpeg"]["path"] = model["codecs"][0]["streamTypes"][0] == "HTTP" ? PathOf(model, "stream") : "/none";
  camera["snapshot"]["path"] = snapshot.substr(0, snapshot.find("?size="));  // simcam takes a size off the address
  return Camera(NameOf(model), camera);
}

/// The shipped files, but all on the port that the user gives, since a simulated camera has only one.
struct OnePortModels : TempFolder {
  OnePortModels() {
    for (const auto& entry : std::filesystem::directory_iterator(SOURCE_FOLDER "/models")) {
      Json::Value file = ParseJson(ReadText(entry.path()));
      for (Json::Value& model : file["models"]) {
        for (const char* place : {"stream", "snapshot"}) model[place].removeMember("port");
        models.append(model)["vendor"] = file["vendor"];
      }
      Write(entry.path().filename(), ToText(file));
    }
  }

  Json::Value models{Json::arrayValue};  ///< each with its vendor
};

}  // namespace

TEST(Models, EachIsRenderedAndReachesACameraOfItsKind) {
  const OnePortModels shipped;
  Json::Value kinds(Json::arrayValue);
  for (const Json::Value& model : shipped.models) kinds.append(CameraOf(model));
  const SimCameras cameras(kinds);
  const TestRecorder recorder({.modelsFolder = shipped.Path()});
  for (const Json::Value& model : shipped.models) {
    SCOPED_TRACE(NameOf(model));
    Json::Value params = CameraParams(cameras.Port(NameOf(model)), kSecret, NameOf(model));
    const Json::Value document = recorder.Post("CamCap", params).json["data"]["camCap"][0];
    EXPECT_EQ(document["ChanlList"], model["channels"]["values"]);
    EXPECT_EQ(document["videoCapList"].size(), model["codecs"].size());
    params["camVideoType"] = document["videoCapList"][0]["vt"];
    params["camSourcePath"] = kUserPath;
    EXPECT_EQ(CodeOf(recorder, "CameraTest", params), 0);
    EXPECT_EQ(CodeOf(recorder, "GetSnapshot", params), 0);
  }
}
