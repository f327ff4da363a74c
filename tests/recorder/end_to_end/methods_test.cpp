#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <set>

#include "tests/recorder/end_to_end/cameras.h"
#include "tests/recorder/end_to_end/support.h"

namespace end_to_end {

namespace {

/// The picture of an answer in JSON; empty when it is the default one.
std::string Picture(const Answer& answer) {
  const std::string bytes = DecodeBase64(answer.json["data"]["img"].asString());
  return IsJpeg(bytes) ? bytes : std::string();
}

std::chrono::milliseconds Time(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
}

}  // namespace

TEST(Methods, AnswerFromALiveCamera) {
  const SimCameras cameras(List({Camera("live")}));
  const int port = cameras.Port("live");
  const TestRecorder recorder;
  recorder.AddCamera("Simcam", "RTSP-H264", port, "admin", kSecret);

  const Answer models = recorder.Get("CameraModelEnum");
  EXPECT_TRUE(models.json["data"]["success"].asBool());
  EXPECT_GT(models.json["data"]["cameraModel"].size(), 1U);
  for (const Json::Value& model : models.json["data"]["cameraModel"]) {
    const bool isUserNamed = model["vendor"] == "User" || model["model"] == "RTSP-Path";
    EXPECT_EQ(model["needsSourcePath"].asBool(), isUserNamed);
  }

  const Answer existing = recorder.Get("EnumExistedCamCap");
  EXPECT_EQ(existing.json["data"]["camCap"].size(), 1U) << existing.body;

  const Answer user = recorder.Get("CamCap", "vendor=User");
  const Answer known = recorder.Get("CamCap", "vendor=Simcam&model=RTSP-H264");
  const Json::Value userObject = user.json["data"]["camCap"][0];
  const Json::Value knownObject = known.json["data"]["camCap"][0];
  EXPECT_EQ(userObject["rtspProtocolCap"].asInt(), 11);
  for (const std::string& member : userObject.getMemberNames()) {
    EXPECT_EQ(knownObject[member].type(), userObject[member].type()) << member;
  }

  EXPECT_EQ(recorder.Post("CameraTest", TestParams(port, kSecret)).Code(), 0);
  EXPECT_EQ(recorder.Post("CameraTest", TestParams(port, "wrong")).Code(), 464);

  Json::Value remote = RemoteParams(port, kSecret);
  EXPECT_EQ(recorder.Post("CamCapRemote", remote).json["data"]["camCap"][0]["id"], knownObject["id"]);
  remote["camPass"] = "wrong";
  EXPECT_EQ(recorder.Post("CamCapRemote", remote).Code(), 461);

  std::set<std::string> pictures;
  for (int i = 0; i < 3; ++i) {
    pictures.insert(Picture(recorder.Post("GetSnapshot", PictureParams(port, kSecret))));
  }
  EXPECT_EQ(pictures.size(), 3U) << "the clock in the picture runs";
  EXPECT_FALSE(pictures.contains("")) << recorder.Log();

  Json::Value raw = PictureParams(port, kSecret);
  raw.removeMember("jsonResponse");
  const Answer picture = recorder.Post("GetSnapshot", raw);
  EXPECT_EQ(picture.contentType, "image/jpeg");
  EXPECT_TRUE(IsJpeg(picture.body));

  const Answer size = recorder.Post("CamCapUserDefineReso", SizeParams(port, kSecret));
  EXPECT_EQ(size.json["data"]["userDefineReso"], "640x480") << recorder.Log();

  EXPECT_EQ(recorder.Log().find(kSecret), std::string::npos);
}

TEST(Methods, BatchKeepsItsOrderAndFailsBadRowsAlone) {
  Json::Value configs(Json::arrayValue);
  for (int i = 0; i < 25; ++i) configs.append(Camera("camera" + std::to_string(i)));
  const SimCameras cameras(configs);
  const TestRecorder recorder;

  Json::Value rows(Json::arrayValue);
  for (int i = 0; i < 25; ++i) {
    if (i == 3) rows.append("not a row");
    if (i == 11) rows.append(BatchRow("bad port", 80, ""))["port"] = "eighty";
    rows.append(BatchRow(std::to_string(i), cameras.Port("camera" + std::to_string(i)), i == 20 ? "wrong" : kSecret));
  }
  rows.append(Json::Value(Json::arrayValue));

  const Answer answer = recorder.Post("CamBatAddVerify", Batch(rows));
  const Json::Value results = answer.json["data"]["resultList"];
  ASSERT_EQ(results.size(), rows.size());
  for (Json::ArrayIndex i = 0; i < rows.size(); ++i) {
    const std::string id = rows[i].isObject() ? rows[i]["tmpId"].asString() : "";
    EXPECT_EQ(results[i]["tmpId"], id);
    const int code = id.empty() || id == "bad port" ? 468 : id == "20" ? 464 : 0;
    EXPECT_EQ(results[i].get("errinfo", Json::Value())["code"].asInt(), code) << id << recorder.Log();
  }
}

/// The five methods that take a password, each as a call with one.
struct PasswordMethod {
  const char* method;
  Json::Value (*params)(int port, const std::string& password);
  bool (*hasPassed)(const Answer&);
};

void PrintTo(const PasswordMethod& row, std::ostream* out) { *out << row.method; }

bool IsSuccess(const Answer& answer) { return answer.Code() == 0; }

const PasswordMethod kPasswordMethods[] = {
    {"CameraTest", [](int port, const std::string& pass) { return TestParams(port, pass); }, IsSuccess},
    {"CamBatAddVerify", [](int port, const std::string& pass) { return Batch(List({BatchRow("1", port, pass)})); },
     [](const Answer& answer) { return answer.json["data"]["resultList"][0]["result"] == 0; }},
    {"GetSnapshot", [](int port, const std::string& pass) { return PictureParams(port, pass); },
     [](const Answer& answer) { return !Picture(answer).empty(); }},
    {"CamCapUserDefineReso", [](int port, const std::string& pass) { return SizeParams(port, pass); }, IsSuccess},
    {"CamCapRemote", [](int port, const std::string& pass) { return RemoteParams(port, pass); }, IsSuccess},
};

class Password : public testing::TestWithParam<PasswordMethod> {};

TEST_P(Password, StoredOneGoesToItsOwnCameraAlone) {
  const PasswordMethod& row = GetParam();
  const SimCameras cameras(List({Camera("own"), Camera("other")}));
  const TestRecorder recorder;
  const int id = recorder.AddCamera("Simcam", "RTSP-H264", cameras.Port("own"), "admin", kSecret);
  const auto ask = [&](const char* camera) {
    Json::Value params = row.params(cameras.Port(camera), kFakePass);
    if (!params.isMember("camList")) params["camId"] = id;
    return recorder.Post(row.method, params);
  };

  EXPECT_FALSE(row.hasPassed(ask("other")));
  EXPECT_EQ(cameras.Log("other")["connections"].asInt(), 0) << "nothing is sent to a strange address";
  EXPECT_TRUE(row.hasPassed(ask("own"))) << recorder.Log();
}

TEST_P(Password, WrongOneIsTriedOnce) {
  const PasswordMethod& row = GetParam();
  const SimCameras cameras(List({Camera("camera")}));
  const TestRecorder recorder;
  EXPECT_FALSE(row.hasPassed(recorder.Post(row.method, row.params(cameras.Port("camera"), "wrong"))));
  EXPECT_EQ(cameras.Log("camera")["refusedLogins"].asInt(), 1);
  EXPECT_TRUE(row.hasPassed(recorder.Post(row.method, row.params(cameras.Port("camera"), kSecret))));
}

INSTANTIATE_TEST_SUITE_P(Method, Password, testing::ValuesIn(kPasswordMethods),
                         [](const auto& row) { return std::string(row.param.method); });

TEST(Limits, EndASilentCameraInTimeWithTheDefaultPicture) {
  const SimCameras cameras(List({Faulty("silent", "silentAfterConnect")}));
  const int port = cameras.Port("silent");
  const TestRecorder recorder({.testMs = 1000, .pictureMs = 1500, .workers = 2, .modelsFolder = {}});

  EXPECT_LT(Time([&] { EXPECT_EQ(recorder.Post("CameraTest", TestParams(port, "")).Code(), 463); }),
            std::chrono::seconds(4));
  EXPECT_LT(Time([&] {
              const Answer answer = recorder.Post("GetSnapshot", PictureParams(port, ""));
              EXPECT_THAT(DecodeBase64(answer.json["data"]["img"].asString()), testing::StartsWith("\x89PNG"));
            }),
            std::chrono::seconds(5));
  Json::Value rows(Json::arrayValue);
  for (int i = 0; i < 12; ++i) rows.append(BatchRow(std::to_string(i), port, ""));
  EXPECT_LT(Time([&] {
              const Answer answer = recorder.Post("CamBatAddVerify", Batch(rows));
              EXPECT_EQ(answer.json["data"]["resultList"][11]["errinfo"]["code"].asInt(), 463);
            }),
            std::chrono::seconds(8));
  EXPECT_EQ(recorder.Get("CamCap", "vendor=User").Code(), 0);
}

struct RealLimit {
  const char* method;
  Json::Value (*params)(int port);
  int seconds;
};

void PrintTo(const RealLimit& row, std::ostream* out) { *out << row.method; }

class RealLimits : public testing::TestWithParam<RealLimit> {};

TEST_P(RealLimits, HoldWithTheirDefaultValue) {
  const SimCameras cameras(List({Faulty("silent", "silentAfterConnect")}));
  const TestRecorder recorder({.testMs = 10'000, .pictureMs = 15'000, .workers = 2, .modelsFolder = {}});
  const auto time = Time([&] { recorder.Post(GetParam().method, GetParam().params(cameras.Port("silent"))); });
  EXPECT_GT(time, std::chrono::seconds(GetParam().seconds - 2));
  EXPECT_LT(time, std::chrono::seconds(GetParam().seconds + 5));
}

INSTANTIATE_TEST_SUITE_P(Method, RealLimits,
                         testing::Values(RealLimit{"CameraTest", [](int port) { return TestParams(port, ""); }, 10},
                                         RealLimit{"GetSnapshot", [](int port) { return PictureParams(port, ""); },
                                                   15}),
                         [](const auto& row) { return std::string(row.param.method); });

}  // namespace end_to_end
