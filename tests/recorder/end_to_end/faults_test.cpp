#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <regex>

#include "rig/cameras.h"
#include "tests/recorder/end_to_end/expect.h"

using namespace rig;

namespace {

/// A row of the table of faults in docs/causes.md, which is what users read and what is tried here.
struct FaultRow {
  std::string fault;
  std::string model;
  int testCode;
  bool hasPicture;
  std::string cause;
  std::string log;
};

std::vector<FaultRow> ReadFaultTable() {
  const std::regex pattern(R"(\| `(\w+)` \| (\S+) \| (\d+) \| (yes|no) \| (\w+) \| (.*?) ?\|)");
  std::vector<FaultRow> rows;
  std::ifstream page(SOURCE_FOLDER "/docs/causes.md");
  for (std::string line; std::getline(page, line);) {
    if (!line.starts_with("| `")) continue;
    std::smatch cells;
    EXPECT_TRUE(std::regex_match(line, cells, pattern)) << line;
    rows.push_back(
        {cells.str(1), cells.str(2), std::stoi(cells.str(3)), cells.str(4) == "yes", cells.str(5), cells.str(6)});
  }
  return rows;
}

/// Cameras of the table that are no fault of the simulator's, but set up so.
Json::Value SetUp(const std::string& fault, const std::string& model) {
  const std::map<std::string, const char*> setUps = {
      {"wrongPassword", "{}"},
      {"bearer", R"({"login": "bearer"})"},
      {"audioOnly", R"({"stream": {"audio": "only"}})"},
      {"audioFirst", R"({"stream": {"audio": "first"}})"},
      {"otherCodec", R"({"server": "scripted", "stream": {"codec": "h265", "source": "clip"}})"},
      {"manyChallenges", R"({"login": {"offer": ["digest-unknown", "digest-sha256", "digest-md5", "basic"]}})"},
      {"oneLineChallenges",
       R"({"login": {"offer": ["digest-unknown", "bearer", "digest-sha256"], "oneHeader": true}})"},
      {"udpLost", R"({"fault": "lostPacket", "stream": {"transport": "udp", "gop": 5}})"},
      {"redirectOther", R"({"fault": "redirectOther", "redirectTo": "http://127.0.0.2:9/"})"},
      {"redirectFile", R"({"fault": "redirectOther", "redirectTo": "file:///etc/hostname"})"},
  };
  const auto found = setUps.find(fault);
  if (found != setUps.end()) return ParseJson(found->second);
  Json::Value camera;
  camera["fault"] = fault;
  if (model == "RTSP-H265") camera["stream"]["codec"] = "h265";
  camera["stream"]["gop"] = 5;  // where the first key frame is bad, the next one comes soon
  return camera;
}

Json::Value FaultyCameras(const std::vector<FaultRow>& rows) {
  Json::Value cameras = List({Camera("healthy")});
  for (const FaultRow& row : rows) cameras.append(Camera(row.fault + " " + row.model, SetUp(row.fault, row.model)));
  return cameras;
}

/// Code of CamCapRemote, which asks as a test does and has codes of its own.
int RemoteCode(const FaultRow& row) {
  if (row.cause == "notThisProtocol") return 460;
  const std::map<int, int> codes = {{0, 0}, {462, 458}, {463, 458}, {464, 461}, {465, 460}};
  const auto found = codes.find(row.testCode);
  return found == codes.end() ? 457 : found->second;
}

void ExpectRow(const TestRecorder& recorder, const FaultRow& row, int port) {
  const std::size_t logged = recorder.Log().size();
  Json::Value params = CameraParams(port, row.fault == "wrongPassword" ? "wrong" : kSecret, "Simcam " + row.model);
  if (row.fault == "otherCodec") params["camVideoType"] = "H.264";
  const auto expect = [&](const char* method, int code) {
    return ExpectAnswer(recorder, method, params, code, row.cause);
  };
  expect("CameraTest", row.testCode);
  expect("CamBatAddVerify", row.testCode);
  expect("CamCapRemote", RemoteCode(row));
  params["camVideoType"] = "H.264";
  expect("GetSnapshot", row.hasPicture ? 0 : -1);
  const Answer size = expect("CamCapUserDefineReso", row.hasPicture ? 0 : 457);
  EXPECT_EQ(size.json["data"]["userDefineReso"].asString(), row.hasPicture ? "640x480" : "");
  EXPECT_THAT(recorder.Log().substr(logged), testing::HasSubstr(row.log));
}

}  // namespace

TEST(Faults, EachHasItsCodeAndLogLineAndTheNextRequestWorks) {
  const std::vector<FaultRow> rows = ReadFaultTable();
  ASSERT_GT(rows.size(), 50U);
  const SimCameras cameras(FaultyCameras(rows));
  const TestRecorder recorder({.testMs = 1000, .pictureMs = 1000, .workers = 1});
  for (const FaultRow& row : rows) {
    SCOPED_TRACE(row.fault + " with " + row.model);
    const std::string name = row.fault + " " + row.model;
    ExpectRow(recorder, row, cameras.Port(name));
    if (row.fault == "wrongPassword") {
      EXPECT_EQ(cameras.Log(name)["refusedLogins"].asUInt64(), kCameraMethods.size()) << "one try of each method";
    }
    if (row.fault.starts_with("redirect")) {
      EXPECT_LT(cameras.Log(name)["requestCount"].asInt(), 50) << "no circle is followed";
    }
    EXPECT_EQ(CodeOf(recorder, "CameraTest", CameraParams(cameras.Port("healthy"), kSecret)), 0);
  }
  EXPECT_THAT(recorder.Log(), testing::Not(testing::HasSubstr(kSecret)));
}

TEST(Faults, AHostWithControlsIsNotContacted) {
  using std::string_literals::operator""s;
  const SimCameras cameras(List({Camera("camera")}));
  const TestRecorder recorder;
  for (const char* model : {"Simcam RTSP-H264", "Simcam HTTP-Snapshot-Sizes", "ONVIF Generic"}) {
    Json::Value params = CameraParams(cameras.Port("camera"), kSecret, model);
    params["camIP"] = params["camList"][0]["ip"] = "127.0.0.1\0\r\nX-Injected: 1"s;
    for (const char* method : kCameraMethods) EXPECT_NE(CodeOf(recorder, method, params), 0) << model << method;
  }
  EXPECT_EQ(cameras.Log("camera")["connections"].asInt(), 0);
}
