#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <set>

#include "tests/recorder/end_to_end/support.h"

namespace end_to_end {

namespace {

constexpr char kFakePass[] = "[stored-password-6f1e0b9c42d7]";
constexpr char kSecret[] = "s3cret, with \"quotes\" & blanks";

Json::Value Camera(const std::string& name, const Json::Value& more = Json::Value(Json::objectValue)) {
  Json::Value camera = more;
  camera["name"] = name;
  camera["port"] = 0;
  camera["user"] = "admin";
  camera["password"] = kSecret;
  if (!camera.isMember("login")) camera["login"] = "digest-md5";
  return camera;
}

Json::Value Faulty(const std::string& name, const std::string& fault) {
  Json::Value camera;
  camera["fault"] = fault;
  return Camera(name, camera);
}

Json::Value List(std::initializer_list<Json::Value> cameras) {
  Json::Value list(Json::arrayValue);
  for (const Json::Value& camera : cameras) list.append(camera);
  return list;
}

Json::Value BatchRow(const std::string& id, int port, const std::string& user, const std::string& password) {
  Json::Value row;
  row["tmpId"] = id;
  row["name"] = "camera " + id;
  row["ip"] = "127.0.0.1";
  row["port"] = port;
  row["username"] = user;
  row["password"] = password;
  row["vendor"] = "Simcam";
  row["model"] = "RTSP-H264";
  return row;
}

Json::Value Batch(const Json::Value& rows) {
  Json::Value params;
  params["camList"] = rows;
  return params;
}

bool IsJpeg(const std::string& bytes) {
  return bytes.starts_with("\xFF\xD8\xFF") && bytes.ends_with(std::string("\xFF\xD9"));
}

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

  EXPECT_EQ(recorder.Post("CameraTest", TestParams(port, "admin", kSecret)).Code(), 0);
  EXPECT_EQ(recorder.Post("CameraTest", TestParams(port, "admin", "wrong")).Code(), 464);

  Json::Value remote = SizeParams(port, "admin", kSecret);
  remote["camCapCmd"] = 1;
  EXPECT_EQ(recorder.Post("CamCapRemote", remote).json["data"]["camCap"][0]["id"], knownObject["id"]);
  remote["camPass"] = "wrong";
  EXPECT_EQ(recorder.Post("CamCapRemote", remote).Code(), 461);

  std::set<std::string> pictures;
  for (int i = 0; i < 3; ++i) {
    pictures.insert(Picture(recorder.Post("GetSnapshot", PictureParams(port, "admin", kSecret))));
  }
  EXPECT_EQ(pictures.size(), 3U) << "the clock in the picture runs";
  EXPECT_FALSE(pictures.contains("")) << recorder.Log();

  Json::Value raw = PictureParams(port, "admin", kSecret);
  raw.removeMember("jsonResponse");
  const Answer picture = recorder.Post("GetSnapshot", raw);
  EXPECT_EQ(picture.contentType, "image/jpeg");
  EXPECT_TRUE(IsJpeg(picture.body));

  const Answer size = recorder.Post("CamCapUserDefineReso", SizeParams(port, "admin", kSecret));
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
    if (i == 11) rows.append(BatchRow("bad port", 80, "admin", ""))["port"] = "eighty";
    rows.append(
        BatchRow(std::to_string(i), cameras.Port("camera" + std::to_string(i)), "admin", i == 20 ? "wrong" : kSecret));
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
  const char* name;
  const char* method;
  std::function<Json::Value(int port, const std::string& user, const std::string& password)> params;
  std::function<bool(const Answer&)> hasPassed;
};

void PrintTo(const PasswordMethod& row, std::ostream* out) { *out << row.method; }

const PasswordMethod kPasswordMethods[] = {
    {"Test", "CameraTest", [](int port, const auto& user, const auto& pass) { return TestParams(port, user, pass); },
     [](const Answer& answer) { return answer.Code() == 0; }},
    {"Batch", "CamBatAddVerify",
     [](int port, const auto& user, const auto& pass) { return Batch(List({BatchRow("1", port, user, pass)})); },
     [](const Answer& answer) { return answer.json["data"]["resultList"][0]["result"].asInt() == 0; }},
    {"Picture", "GetSnapshot",
     [](int port, const auto& user, const auto& pass) { return PictureParams(port, user, pass); },
     [](const Answer& answer) { return !Picture(answer).empty(); }},
    {"Size", "CamCapUserDefineReso",
     [](int port, const auto& user, const auto& pass) { return SizeParams(port, user, pass); },
     [](const Answer& answer) { return answer.Code() == 0; }},
    {"Remote", "CamCapRemote",
     [](int port, const auto& user, const auto& pass) {
       Json::Value params = SizeParams(port, user, pass);
       params["camCapCmd"] = 1;
       return params;
     },
     [](const Answer& answer) { return answer.Code() == 0; }},
};

class Password : public testing::TestWithParam<PasswordMethod> {};

TEST_P(Password, StoredOneGoesToItsOwnCameraAlone) {
  const PasswordMethod& row = GetParam();
  const SimCameras cameras(List({Camera("own"), Camera("other")}));
  const TestRecorder recorder;
  const int id = recorder.AddCamera("Simcam", "RTSP-H264", cameras.Port("own"), "admin", kSecret);
  const auto ask = [&](const char* camera) {
    Json::Value params = row.params(cameras.Port(camera), "admin", kFakePass);
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
  EXPECT_FALSE(row.hasPassed(recorder.Post(row.method, row.params(cameras.Port("camera"), "admin", "wrong"))));
  EXPECT_EQ(cameras.Log("camera")["refusedLogins"].asInt(), 1);
  EXPECT_TRUE(row.hasPassed(recorder.Post(row.method, row.params(cameras.Port("camera"), "admin", kSecret))));
}

INSTANTIATE_TEST_SUITE_P(Method, Password, testing::ValuesIn(kPasswordMethods),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Limits, EndASilentCameraInTimeWithTheDefaultPicture) {
  const SimCameras cameras(List({Faulty("silent", "silentAfterConnect")}));
  const int port = cameras.Port("silent");
  const TestRecorder recorder({.testMs = 1000, .pictureMs = 1500, .modelsFolder = {}});

  EXPECT_LT(Time([&] { EXPECT_EQ(recorder.Post("CameraTest", TestParams(port, "admin", "")).Code(), 463); }),
            std::chrono::seconds(4));
  EXPECT_LT(Time([&] {
              const Answer answer = recorder.Post("GetSnapshot", PictureParams(port, "admin", ""));
              EXPECT_THAT(DecodeBase64(answer.json["data"]["img"].asString()), testing::StartsWith("\x89PNG"));
            }),
            std::chrono::seconds(5));
  Json::Value rows(Json::arrayValue);
  for (int i = 0; i < 12; ++i) rows.append(BatchRow(std::to_string(i), port, "admin", ""));
  EXPECT_LT(Time([&] {
              const Answer answer = recorder.Post("CamBatAddVerify", Batch(rows));
              EXPECT_EQ(answer.json["data"]["resultList"][11]["errinfo"]["code"].asInt(), 463);
            }),
            std::chrono::seconds(8));
  EXPECT_EQ(recorder.Get("CamCap", "vendor=User").Code(), 0);
}

struct RealLimit {
  const char* name;
  const char* method;
  Json::Value (*params)(int port);
  int seconds;
};

void PrintTo(const RealLimit& row, std::ostream* out) { *out << row.method; }

class RealLimits : public testing::TestWithParam<RealLimit> {};

TEST_P(RealLimits, HoldWithTheirDefaultValue) {
  const SimCameras cameras(List({Faulty("silent", "silentAfterConnect")}));
  const TestRecorder recorder({.testMs = 10'000, .pictureMs = 15'000, .modelsFolder = {}});
  const auto time = Time([&] { recorder.Post(GetParam().method, GetParam().params(cameras.Port("silent"))); });
  EXPECT_GT(time, std::chrono::seconds(GetParam().seconds - 2));
  EXPECT_LT(time, std::chrono::seconds(GetParam().seconds + 5));
}

INSTANTIATE_TEST_SUITE_P(
    Method, RealLimits,
    testing::Values(RealLimit{"Test", "CameraTest", [](int port) { return TestParams(port, "admin", ""); }, 10},
                    RealLimit{"Picture", "GetSnapshot", [](int port) { return PictureParams(port, "admin", ""); }, 15}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace end_to_end
