#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "rig/cameras.h"

// From an address to its streams.

using namespace rig;

using testing::HasSubstr;

namespace {

struct FindCase {
  const char* name;
  const char* config;                          ///< of the simulated camera
  const char* login;                           ///< how it ends with the right password
  std::map<std::string, const char*> streams;  ///< by path: channel, name, codec, and whether it was asked for
};

constexpr char kRecorder[] = R"({"onvif": {"channels": 4, "login": "token", "clockHours": 3}, "stream": [
    {"path": "/c/101"}, {"path": "/c/102", "width": 320, "height": 240},
    {"path": "/c/201"}, {"path": "/c/202", "width": 320, "height": 240},
    {"path": "/c/301"}, {"path": "/c/302", "width": 320, "height": 240},
    {"path": "/c/401"}, {"path": "/c/402", "width": 320, "height": 240}]})";

const FindCase kCases[] = {
    {"Onvif",
     R"({"onvif": {"login": "http"}, "stream": [{"path": "/x", "width": 320, "height": 240}, {"path": "/y"}]})",
     "accepted",
     {{"/x", "1 sub H.264 asked"}, {"/y", "1 main H.264 asked"}}},
    {"ChannelsByTheirPattern",
     kRecorder,
     "accepted",
     {{"/c/101", "1 main H.264 asked"},
      {"/c/102", "1 sub H.264 asked"},
      {"/c/201", "2 main H.264 asked"},
      {"/c/202", "2 sub H.264 worked out"},
      {"/c/301", "3 main H.264 worked out"},
      {"/c/302", "3 sub H.264 worked out"},
      {"/c/401", "4 main H.264 worked out"},
      {"/c/402", "4 sub H.264 asked"}}},
    {"PathOfAModelFile",
     R"({"stream": {"path": "/stream1", "codec": "h265"}})",
     "accepted",
     {{"/stream1", "1 main H.265 asked"}}},
    {"ChannelsOfAModelFile",
     R"({"stream": {"path": "/ch1/stream1"}})",
     "accepted",
     {{"/ch1/stream1", "1 main H.264 asked"},
      {"/ch2/stream1", "2 main H.264 worked out"},
      {"/ch3/stream1", "3 main H.264 worked out"},
      {"/ch4/stream1", "4 main H.264 worked out"}}},
    {"WithoutALogin", R"({"login": "none"})", "notNeeded", {{"/stream1", "1 main H.264 asked"}}},
    {"PictureOverHttp",
     R"({"stream": {"path": "/not/in/a/file"}})",
     "accepted",
     {{"/video.mjpg", "1 main MJPEG asked"}}},
    {"NoKnownPath", R"({"stream": {"path": "/not/in/a/file"}, "mjpeg": {"path": "/nor/this"}})", "accepted", {}},
};

Json::Value Cameras() {
  Json::Value cameras(Json::arrayValue);
  for (const FindCase& row : kCases) cameras.append(Camera(row.name, ParseJson(row.config)));
  return cameras;
}

/// The paths of one vendor are all that is known, whatever else the recorder comes with.
struct OneVendor : TempFolder {
  OneVendor() {
    for (const char* file : {"schema.json", "simcam.json"}) {
      std::filesystem::copy_file(std::filesystem::path(SOURCE_FOLDER "/models") / file, Path() / file);
    }
  }
};

class FindTest : public testing::Test {
 protected:
  Finished Find(const std::string& camera, const std::string& password) const {
    const std::string port = std::to_string(cameras_.Port(camera));
    return recorder_.Control({"find", "127.0.0.1", "--port", port, "--user", "admin", "--json"}, password + "\n");
  }

  const OneVendor models_;
  const SimCameras cameras_{Cameras()};
  const TestRecorder recorder_{{.modelsFolder = models_.Path()}};
};

std::string Summary(const Json::Value& stream) {
  return stream["channel"].asString() + ' ' + stream["name"].asString() + ' ' + stream["codec"].asString() +
         (stream["asked"].asBool() ? " asked" : " worked out");
}

}  // namespace

TEST_F(FindTest, ListsTheStreams) {
  for (const FindCase& row : kCases) {
    SCOPED_TRACE(row.name);
    const Finished finished = Find(row.name, kSecret);
    const std::string json = finished.output.substr(finished.output.find('{'));  // behind what was logged
    const Json::Value found = ParseJson(json.substr(0, json.find('\n')));
    EXPECT_EQ(finished.status, row.streams.empty() ? 1 : 0) << finished.output;
    EXPECT_EQ(found["cause"], row.streams.empty() ? "noSuchStream" : "ok");
    EXPECT_EQ(found["login"], row.login);
    ASSERT_EQ(found["streams"].size(), row.streams.size()) << found;
    for (const Json::Value& stream : found["streams"]) {
      const auto wanted = row.streams.find(stream["path"].asString());
      ASSERT_NE(wanted, row.streams.end()) << stream;
      EXPECT_EQ(Summary(stream), wanted->second);
    }
    const Json::Value log = cameras_.Log(row.name);
    EXPECT_EQ(found["requests"], log["requestCount"]);
    EXPECT_LE(log["requestCount"].asInt(), 20) << log;
    EXPECT_EQ(log["mostConnections"], 1) << log;
  }
}

TEST_F(FindTest, TriesAWrongPasswordOnce) {
  for (const FindCase& row : kCases) {
    SCOPED_TRACE(row.name);
    const bool isOpen = std::string(row.login) == "notNeeded";
    EXPECT_EQ(Find(row.name, "wrong").status, isOpen ? 0 : 1);
    EXPECT_EQ(cameras_.Log(row.name)["refusedLogins"], isOpen ? 0 : 1) << cameras_.Log(row.name);
  }
}

TEST_F(FindTest, StoresTheMainStream) {
  const std::map<std::string, const char*> stored = {
      {"Onvif", "ONVIF Generic"}, {"PathOfAModelFile", "Simcam RTSP-H264"}, {"WithoutALogin", "Simcam RTSP-H264"}};
  int id = 0;
  for (const auto& [camera, model] : stored) {
    SCOPED_TRACE(camera);
    const std::string port = std::to_string(cameras_.Port(camera));
    const Finished added = recorder_.Control(
        {"camera", "add", "--find", "127.0.0.1", "--port", port, "--user", "admin"}, std::string(kSecret) + "\n");
    ASSERT_EQ(added.status, 0) << added.output;
    EXPECT_THAT(added.output, HasSubstr(model));
    EXPECT_EQ(recorder_.Control({"test", std::to_string(++id)}).status, 0) << "what was found can be used";
  }
}
