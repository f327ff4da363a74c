#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <iostream>
#include <map>
#include <sstream>

#include "rig/cameras.h"
#include "rig/http_client.h"
#include "rig/questions.h"
#include "tests/recorder/end_to_end/expect.h"

// From an address to its streams.

using namespace rig;

using testing::HasSubstr;
using testing::Not;

namespace {

using Streams = std::map<std::string, const char*>;

struct FindCase {
  const char* name;
  const char* config;  ///< of the simulated camera
  const char* login;   ///< how it ends with the right password
  Streams streams;     ///< by path: channel, name, codec, and whether it was asked for
  const char* warning = "";
};

const Streams kUsual = {{"/stream1", "1 main H.264 asked"}};

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
      {"/c/402", "4 sub H.264 asked"}},
     "clockWrong"},
    {"OnvifHasOtherUsers", R"({"onvif": {"ownUsers": true}})", "onvifOthers", kUsual, "onvifOthers"},
    {"OnvifHasOtherUsersAndTokens", R"({"onvif": {"ownUsers": true, "login": "token"}})", "onvifOthers", kUsual,
     "onvifOthers"},
    {"YesToEveryPath",
     R"({"stream": {"path": "/not/in/a/file", "anyPath": true}})",
     "accepted",
     {{"/stream1", "1 main  worked out"}},
     "anyPath"},
    {"LocksAfterThreeWrongLogins", R"({"fault": "lockOut"})", "accepted", kUsual},
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
    {"WithoutALogin", R"({"login": "none"})", "notNeeded", kUsual},
    {"PictureOverHttp",
     R"({"stream": {"path": "/not/in/a/file"}})",
     "accepted",
     {{"/video.mjpg", "1 main MJPEG asked"}}},
    {"NoKnownPath", R"({"stream": {"path": "/not/in/a/file"}, "mjpeg": {"path": "/nor/this"}})", "accepted", {}},
};

std::string PathOf(int channel, int number) { return "/Channels/" + std::to_string(100 * channel + number); }

/// A recorder with 32 channels.
Json::Value Recorder() {
  Json::Value config = ParseJson(R"({"server": "scripted", "onvif": {"channels": 32, "login": "token"}})");
  for (int channel = 1; channel <= 32; ++channel) {
    for (const int number : {1, 2}) {
      Json::Value& stream = config["stream"].append(ParseJson(R"({"height": 240, "fps": 5, "gop": 5})"));
      stream["path"] = PathOf(channel, number);
      stream["width"] = 640 / number;
    }
  }
  return Camera("Recorder", config);
}

Json::Value CamerasToFind() {
  Json::Value cameras = List({Recorder()});
  for (const FindCase& row : kCases) cameras.append(Camera(row.name, ParseJson(row.config)));
  return cameras;
}

/// What was found at a simulated camera, and what that saw of it.
struct Finding {
  int status;
  Json::Value found;
  Json::Value log;
};

/// The camera counted as many requests, and was not asked more than it may be.
void ExpectFewRequests(const Finding& finding) {
  EXPECT_EQ(finding.found["requests"], finding.log["requestCount"]);
  EXPECT_LE(finding.log["requestCount"].asInt(), 20) << finding.log;
  EXPECT_EQ(finding.log["mostConnections"], 1) << finding.log;
}

/// The paths of one vendor are all that is known, whatever else the recorder comes with.
struct OneVendor : TempFolder {
  OneVendor() {
    CopySchema(*this);
    Write("simcam.json", ReadText(SOURCE_FOLDER "/models/simcam.json"));
  }
};

class FindTest : public testing::Test {
 protected:
  /// Prints what it cost, too.
  Finding Find(const std::string& camera, const std::string& password) const {
    const std::string port = std::to_string(cameras_.Port(camera));
    const Finished finished =
        recorder_.Control({"find", "127.0.0.1", "--port", port, "--user", "admin", "--json"}, password + "\n");
    const std::string json = finished.output.substr(finished.output.find('{'));  // behind what was logged
    Finding finding{finished.status, ParseJson(json.substr(0, json.find('\n'))), cameras_.Log(camera)};
    std::cout << camera << '\t' << finding.found["requests"] << " requests\t" << finding.found["seconds"] << " s\t"
              << finding.log["logins"] << " logins\t" << finding.log["refusedLogins"] << " refused\n";
    return finding;
  }

  /// The lines of the API's answer.
  std::vector<Json::Value> Ask(const std::string& camera, const std::string& password) const {
    Json::Value body = ParseJson(R"({"host": "127.0.0.1", "user": "admin"})");
    body["password"] = password;
    body["ports"].append(cameras_.Port(camera));
    std::string request = HttpRequest("POST", "/recorder/1/find", recorder_.Login(), ToText(body));
    request.replace(request.find("HTTP/1.1"), 8, "HTTP/1.0");  // its answer has no chunks, and ends with the connection
    Connection connection(recorder_.Port(), std::chrono::seconds(60));
    connection.Send(request);
    std::string answer;
    while (connection.Receive(answer)) continue;
    EXPECT_EQ(HeaderOf(answer, "Content-Type"), "application/x-ndjson") << answer;
    EXPECT_THAT(answer + recorder_.Log(), Not(HasSubstr(std::string(kSecret).substr(0, 6))));
    std::vector<Json::Value> lines;
    std::istringstream text(answer.substr(answer.find("\r\n\r\n") + 4));
    for (std::string line; std::getline(text, line);) lines.push_back(ParseJson(line));
    return lines;
  }

  const OneVendor models_;
  const SimCameras cameras_{CamerasToFind()};
  const TestRecorder recorder_{{.modelsFolder = models_.Path()}};
};

std::string Summary(const Json::Value& stream) {
  return stream["channel"].asString() + ' ' + stream["name"].asString() + ' ' + stream["codec"].asString() +
         (stream["asked"].asBool() ? " asked" : " worked out");
}

TEST_F(FindTest, ListsTheStreams) {
  for (const FindCase& row : kCases) {
    SCOPED_TRACE(row.name);
    const auto [status, found, log] = Find(row.name, kSecret);
    EXPECT_EQ(status, row.streams.empty() ? 1 : 0);
    EXPECT_EQ(found["cause"], row.streams.empty() ? "noSuchStream" : "ok");
    EXPECT_EQ(found["login"], row.login);
    EXPECT_EQ(found["warnings"].get(0U, "").asString(), row.warning);
    ASSERT_EQ(found["streams"].size(), row.streams.size()) << found;
    for (const Json::Value& stream : found["streams"]) {
      const auto wanted = row.streams.find(stream["path"].asString());
      ASSERT_NE(wanted, row.streams.end()) << stream;
      EXPECT_EQ(Summary(stream), wanted->second);
    }
    ExpectFewRequests({status, found, log});
    EXPECT_EQ(log["refusedLogins"], found["login"] == "onvifOthers" ? 1 : 0);
  }
}

TEST_F(FindTest, ListsARecorderWith32Channels) {
  const Finding finding = Find("Recorder", kSecret);
  ExpectFewRequests(finding);
  ASSERT_EQ(finding.found["streams"].size(), 64U) << finding.found;
  for (int i = 0; i < 64; ++i) EXPECT_EQ(finding.found["streams"][i]["path"], PathOf(i / 2 + 1, i % 2 + 1));
}

TEST_F(FindTest, TriesAWrongPasswordOnce) {
  for (const FindCase& row : kCases) {
    SCOPED_TRACE(row.name);
    const bool isOpen = std::string(row.login) == "notNeeded";
    const auto [status, found, log] = Find(row.name, "wrong");
    EXPECT_EQ(status, isOpen ? 0 : 1);
    EXPECT_EQ(log["refusedLogins"], isOpen ? 0 : 1) << log;
  }
  EXPECT_EQ(Find("LocksAfterThreeWrongLogins", kSecret).status, 0);
}

TEST_F(FindTest, AnswersOverTheApiAsTheCommandDoes) {
  for (const auto& [password, cause] : {std::pair(kSecret, "ok"), std::pair("wrong", "loginRefused")}) {
    std::vector<Json::Value> lines = Ask("Onvif", password);
    Json::Value found = Find("Onvif", password).found;
    Json::Value& end = lines.back();
    for (const char* member : {"seconds", "clockOffset"}) {  // differ from time to time
      for (Json::Value* one : {&found, &end["data"]}) one->removeMember(member);
    }
    EXPECT_EQ(end["data"], found);
    EXPECT_EQ(end["data"]["cause"], cause);
    EXPECT_EQ(end["success"], end["error"].isNull());
    EXPECT_EQ(end["error"].get("cause", "ok"), cause);
    EXPECT_EQ(lines.front()["step"], "ports");
  }
}

TEST_F(FindTest, StoresTheMainStream) {
  const std::map<std::string, const char*> stored = {{"ChannelsByTheirPattern", ": ONVIF Generic at"},
                                                     {"Onvif", ": User at"},
                                                     {"PathOfAModelFile", ": User at"},
                                                     {"WithoutALogin", ": User at"}};
  const auto add = [this](const std::string& camera) {
    const std::string port = std::to_string(cameras_.Port(camera));
    return recorder_.Control({"camera", "add", "--find", "127.0.0.1", "--port", port, "--user", "admin"},
                             std::string(kSecret) + "\n");
  };
  EXPECT_EQ(add("YesToEveryPath").status, 1) << "the camera confirmed none";
  int id = 0;
  for (const auto& [camera, model] : stored) {
    SCOPED_TRACE(camera);
    const Finished added = add(camera);
    ASSERT_EQ(added.status, 0) << added.output;
    EXPECT_THAT(added.output, HasSubstr(model));
    EXPECT_EQ(recorder_.Control({"test", std::to_string(++id)}).status, 0) << "what was found can be used";
  }
  EXPECT_THAT(ToText(cameras_.Log("Onvif")), HasSubstr(R"("path" : "/y")")) << "as it was listed";
}

}  // namespace
