#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <set>

#include "tests/recorder/end_to_end/cameras.h"

namespace end_to_end {

namespace {

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

  Json::Value params = CameraParams(port, kSecret);
  EXPECT_EQ(CodeOf(recorder, "CameraTest", params), 0);
  EXPECT_EQ(recorder.Post("CamCapRemote", params).json["data"]["camCap"][0]["id"], knownObject["id"]);
  EXPECT_EQ(CodeOf(recorder, "CameraTest", CameraParams(port, "wrong")), 464);
  EXPECT_EQ(CodeOf(recorder, "CamCapRemote", CameraParams(port, "wrong")), 461);

  std::set<std::string> pictures;
  for (int i = 0; i < 3; ++i) pictures.insert(PictureOf(recorder.Post("GetSnapshot", params)));
  EXPECT_EQ(pictures.size(), 3U) << "the clock in the picture runs";
  EXPECT_FALSE(pictures.contains("")) << recorder.Log();

  const Answer size = recorder.Post("CamCapUserDefineReso", params);
  EXPECT_EQ(size.json["data"]["userDefineReso"], "640x480") << recorder.Log();

  params.removeMember("jsonResponse");
  const Answer picture = recorder.Post("GetSnapshot", params);
  EXPECT_EQ(picture.contentType, "image/jpeg");
  EXPECT_TRUE(IsJpeg(picture.body));

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

TEST(Password, WrongOneIsTriedOnce) {
  const char* const faults[] = {"none", "hangUpWith401", "hangUpOnLogin", "resetOnLogin"};
  Json::Value list;
  for (const char* fault : faults) list.append(Faulty(fault, fault));
  const SimCameras cameras(list);
  const TestRecorder recorder;
  for (const char* fault : faults) {
    int tried = 0;
    for (const char* method : kCameraMethods) {
      SCOPED_TRACE(std::string(fault) + " " + method);
      EXPECT_NE(CodeOf(recorder, method, CameraParams(cameras.Port(fault), "wrong")), 0);
      EXPECT_EQ(cameras.Log(fault)["refusedLogins"].asInt(), ++tried);
      EXPECT_EQ(CodeOf(recorder, method, CameraParams(cameras.Port(fault), kSecret)), 0);
    }
  }
}

TEST(Limits, EndASilentCameraInTimeWithTheDefaultPicture) {
  const SimCameras cameras(List({Faulty("silent", "silentAfterConnect")}));
  const TestRecorder recorder({.testMs = 1000, .pictureMs = 1500});
  Json::Value params = CameraParams(cameras.Port("silent"), "");
  for (int i = 1; i < 12; ++i) params["camList"].append(BatchRow(std::to_string(i), cameras.Port("silent"), ""));

  const auto test = Time([&] { EXPECT_EQ(CodeOf(recorder, "CameraTest", params), 463); });
  EXPECT_GT(test, std::chrono::milliseconds(800));
  EXPECT_LT(test, std::chrono::seconds(4));
  const auto picture = Time([&] {
    const Answer answer = recorder.Post("GetSnapshot", params);
    EXPECT_THAT(DecodeBase64(answer.json["data"]["img"].asString()), testing::StartsWith("\x89PNG"));
  });
  EXPECT_GT(picture, std::chrono::milliseconds(1300));
  EXPECT_LT(picture, std::chrono::seconds(5));
  const auto batch = Time([&] {
    const Answer answer = recorder.Post("CamBatAddVerify", params);
    EXPECT_EQ(answer.json["data"]["resultList"][11]["errinfo"]["code"].asInt(), 463);
  });
  EXPECT_LT(batch, std::chrono::seconds(8));
  EXPECT_EQ(recorder.Get("CamCap", "vendor=User").Code(), 0);
}

}  // namespace end_to_end
