#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "tests/recorder/end_to_end/cameras.h"
#include "tests/recorder/end_to_end/support.h"

namespace end_to_end {

namespace {

/// A row of the table of faults in docs/causes.md, which is what users read and what is tried here.
struct FaultRow {
  std::string fault;
  std::string model;
  int testCode;
  bool hasPicture;
  std::string log;
};

std::string Trim(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" `");
  return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" `") - first + 1);
}

std::vector<FaultRow> ReadFaultTable() {
  std::vector<FaultRow> rows;
  std::ifstream page(SOURCE_FOLDER "/docs/causes.md");
  for (std::string line; std::getline(page, line);) {
    if (!line.starts_with("| `")) continue;
    std::vector<std::string> cells;
    std::istringstream row(line);
    for (std::string cell; std::getline(row, cell, '|');) cells.push_back(Trim(cell));
    rows.push_back({cells.at(1), cells.at(2), std::stoi(cells.at(3)), cells.at(4) == "yes", cells.at(5)});
  }
  return rows;
}

/// Cameras of the table that are no fault of the simulator's, but set up so.
Json::Value SetUp(const std::string& fault) {
  const std::map<std::string, const char*> setUps = {
      {"wrongPassword", "{}"},
      {"bearer", R"({"login": "bearer"})"},
      {"audioOnly", R"({"stream": {"audio": "only"}})"},
      {"audioFirst", R"({"stream": {"audio": "first"}})"},
      {"otherCodec", R"({"stream": {"codec": "h265"}})"},
      {"manyChallenges", R"({"login": {"offer": ["digest-unknown", "digest-sha256", "digest-md5", "basic"]}})"},
      {"oneLineChallenges",
       R"({"login": {"offer": ["digest-unknown", "bearer", "digest-sha256"], "oneHeader": true}})"},
      {"redirectOther", R"({"fault": "redirectOther", "redirectTo": "http://127.0.0.2:9/"})"},
  };
  const auto found = setUps.find(fault);
  if (found != setUps.end()) return ParseJson(found->second);
  Json::Value camera;
  camera["fault"] = fault;
  camera["stream"]["gop"] = 5;  // where the first key frame is bad, the next one comes soon
  return camera;
}

Json::Value FaultyCameras(const std::vector<FaultRow>& rows) {
  Json::Value cameras = List({Camera("healthy")});
  for (const FaultRow& row : rows) cameras.append(Camera(row.fault + " " + row.model, SetUp(row.fault)));
  return cameras;
}

/// Code of CamCapRemote, which asks as a test does and has codes of its own.
int RemoteCode(const FaultRow& row) {
  if (row.log == "another protocol is spoken there") return 460;
  const std::map<int, int> codes = {{0, 0}, {462, 458}, {463, 458}, {464, 461}, {465, 460}};
  const auto found = codes.find(row.testCode);
  return found == codes.end() ? 457 : found->second;
}

/// What the recorder logs while this lives.
class NewLog {
 public:
  explicit NewLog(const TestRecorder& recorder) : recorder_(recorder), start_(recorder.Log().size()) {}
  std::string Text() const { return recorder_.Log().substr(start_); }

 private:
  const TestRecorder& recorder_;
  std::size_t start_;
};

void Ask(const TestRecorder& recorder, const FaultRow& row, int port) {
  const NewLog log(recorder);
  const std::string password = row.fault == "wrongPassword" ? "wrong" : kSecret;
  Json::Value test = TestParams(port, password, "Simcam " + row.model);
  if (row.fault == "otherCodec") test["camVideoType"] = "H.264";
  EXPECT_EQ(recorder.Post("CameraTest", test).Code(), row.testCode);

  const Answer batch = recorder.Post("CamBatAddVerify", Batch(List({BatchRow("1", port, password, row.model)})));
  EXPECT_EQ(batch.json["data"]["resultList"][0].get("errinfo", Json::Value())["code"].asInt(), row.testCode);
  EXPECT_EQ(recorder.Post("CamCapRemote", RemoteParams(port, password, row.model)).Code(), RemoteCode(row));

  Json::Value picture = PictureParams(port, password, "Simcam " + row.model);
  picture["camVideoType"] = "H.264";
  const Answer snapshot = recorder.Post("GetSnapshot", picture);
  EXPECT_EQ(IsJpeg(DecodeBase64(snapshot.json["data"]["img"].asString())), row.hasPicture);

  const Answer size = recorder.Post("CamCapUserDefineReso", SizeParams(port, password, row.model));
  EXPECT_EQ(size.Code(), row.hasPicture ? 0 : 457);
  if (row.hasPicture) {
    EXPECT_EQ(size.json["data"]["userDefineReso"], "640x480");
  }
  EXPECT_THAT(log.Text(), testing::HasSubstr(row.log));
}

}  // namespace

TEST(Faults, EachHasItsCodeAndLogLineAndTheNextRequestWorks) {
  const std::vector<FaultRow> rows = ReadFaultTable();
  ASSERT_GT(rows.size(), 50U);
  const SimCameras cameras(FaultyCameras(rows));
  const TestRecorder recorder({.testMs = 1000, .pictureMs = 1000, .workers = 1, .modelsFolder = {}});
  for (const FaultRow& row : rows) {
    SCOPED_TRACE(row.fault + " with " + row.model);
    Ask(recorder, row, cameras.Port(row.fault + " " + row.model));
    EXPECT_EQ(recorder.Post("CameraTest", TestParams(cameras.Port("healthy"), kSecret)).Code(), 0);
  }
  EXPECT_THAT(recorder.Log(), testing::Not(testing::HasSubstr(kSecret)));
}

}  // namespace end_to_end
