#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>

#include "rig/cameras.h"
#include "tests/recorder/end_to_end/expect.h"

// A stream as it comes, whatever its camera claims.

using namespace rig;

namespace {

struct MeasureCase {
  const char* name;
  const char* stream;  ///< of simcam
  const char* codec;
  double frameRate;
  double keyFrames;      ///< s between them; 0: further apart than is watched
  const char* warnings;  ///< their names
};

const MeasureCase kMeasureCases[] = {
    {"H264", R"("codec": "h264", "fps": 25, "gop": 25)", "H.264", 25, 1, ""},
    {"H264WithBitRate", R"("codec": "h264", "fps": 10, "gop": 10, "bitrate": 300)", "H.264", 10, 1, ""},
    {"H265", R"("codec": "h265", "fps": 15, "gop": 60)", "H.265", 15, 4, "keyFramesFar h265 "},
    {"Mpeg4", R"("codec": "mpeg4", "fps": 12, "gop": 24)", "MPEG4", 12, 2, ""},
    {"Jpeg", R"("codec": "jpeg", "fps": 5)", "MJPEG", 5, 0.2, ""},
    {"KeyFrameEveryMinute", R"("codec": "h264", "fps": 5, "gop": 300)", "H.264", 5, 0, "keyFramesFar "},
    {"OverUdp", R"("fps": 25, "gop": 25, "transport": "udp")", "H.264", 25, 1, ""},
};

Json::Value CameraOf(const MeasureCase& row) {
  return Camera(row.name, ParseJson(R"({"server": "scripted", "stream": {)" + std::string(row.stream) +
                                    R"(, "source": "clip"}})"));
}

std::string NamesOf(const Json::Value& warnings) {
  std::string names;
  for (const Json::Value& warning : warnings) names += warning["name"].asString() + ' ';
  return names;
}

class MeasureTest : public testing::Test {
 protected:
  Finished Measure(const std::string& camera, const std::string& password) const {
    return recorder_.Control(
        {"measure", "127.0.0.1:" + std::to_string(cameras_.Port(camera)) + "/stream1", "--user", "admin", "--json"},
        password + "\n");
  }

  void ExpectFigures(const MeasureCase& row, const std::string& output) const {
    const Json::Value measured = ParseJson(output.substr(0, output.find('\n')));
    const double bitRate = cameras_.Log(row.name)["bitRate"].asDouble();
    EXPECT_EQ(measured["codec"], row.codec);
    EXPECT_EQ(measured["width"], 640);
    EXPECT_EQ(measured["height"], 480);
    EXPECT_NEAR(measured["frameRate"].asDouble(), row.frameRate, row.frameRate * 0.05);
    EXPECT_NEAR(measured["bitRate"].asDouble(), bitRate, bitRate * 0.05);
    EXPECT_NEAR(measured["keyFrameDistance"].asDouble(), row.keyFrames, row.keyFrames * 0.05);
    EXPECT_EQ(measured["keyFrameMoreThan"].asDouble() > 4, row.keyFrames == 0);
    EXPECT_EQ(NamesOf(measured["warnings"]), row.warnings);
  }

  const SimCameras cameras_{ListOf(kMeasureCases, [](const MeasureCase& row) { return CameraOf(row); })};
  const TestRecorder recorder_;
};

TEST_F(MeasureTest, TellsWhatCamerasSend) {
  std::vector<std::future<Finished>> measured;
  for (const MeasureCase& row : kMeasureCases) {
    measured.push_back(std::async(std::launch::async, [&] { return Measure(row.name, kSecret); }));
  }
  for (std::size_t i = 0; i < measured.size(); ++i) {
    SCOPED_TRACE(kMeasureCases[i].name);
    const Finished finished = measured[i].get();
    EXPECT_EQ(finished.status, 0) << finished.output;
    ExpectFigures(kMeasureCases[i], finished.output);
    EXPECT_EQ(cameras_.Log(kMeasureCases[i].name)["sessions"], 1);
  }
}

struct RefusalCase {
  const char* name;
  const char* change;  ///< of a request that would succeed
  int status;
  const char* cause;
};

const RefusalCase kRefusals[] = {
    {"WrongPassword", R"("password": "wrong")", 502, "loginRefused"},
    {"NoSuchPath", R"("path": "/nothing")", 502, "noSuchStream"},
    {"ForeignPath", R"("path": "rtsp://192.0.2.1/stream1")", 502, "foreignPath"},
    {"NoHost", R"("host": "")", 400, ""},
    {"TooLong", R"("seconds": 13)", 400, ""},
    {"Usual", R"("tls": false)", 200, ""},
};

TEST_F(MeasureTest, NamesTheCauseToAdmins) {
  for (const RefusalCase& row : kRefusals) {
    SCOPED_TRACE(row.name);
    Json::Value body = ParseJson(std::string("{") + row.change + "}");
    const Json::Value usual = ParseJson(R"({"host": "127.0.0.1", "path": "/stream1", "user": "admin"})");
    for (const std::string& name : usual.getMemberNames()) body[name] = body.get(name, usual[name]);
    body["port"] = cameras_.Port("H264");
    body["password"] = body.get("password", kSecret);
    const Answer answer = recorder_.Send("POST", "/recorder/1/measure", recorder_.Login(), ToText(body));
    EXPECT_EQ(answer.status, row.status) << answer.body;
    EXPECT_EQ(answer.json["error"]["cause"].asString(), row.cause);
  }
  EXPECT_EQ(cameras_.Log("H264")["refusedLogins"], 1);
}

}  // namespace
