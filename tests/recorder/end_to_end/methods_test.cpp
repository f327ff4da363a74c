#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <set>

#include "rig/cameras.h"

using namespace rig;

TEST(Methods, AnswerFromALiveCamera) {
  const SimCameras cameras(List({Camera("live")}));
  const TestRecorder recorder;
  for (const char* method : {"CameraModelEnum", "EnumExistedCamCap"}) EXPECT_EQ(recorder.Get(method).Code(), 0);
  Json::Value params;
  for (const char* model : {"Simcam RTSP-Any", "Simcam RTSP-H264"}) {
    params = CameraParams(cameras.Port("live"), kSecret, model);
    for (const char* method : kCameraMethods) EXPECT_EQ(CodeOf(recorder, method, params), 0) << model << " " << method;
  }
  EXPECT_EQ(recorder.Get("CamCap", "vendor=Simcam&model=RTSP-Any").json["data"]["camCap"][0]["videoCapList"],
            ParseJson("[]"));
  std::set<std::string> pictures;
  for (int i = 0; i < 3; ++i) pictures.insert(PictureOf(recorder.Post("GetSnapshot", params)));
  EXPECT_EQ(pictures.size(), 3U) << "the clock in the picture runs";

  params = CameraParams(cameras.Port("live"), kSecret, "User any");
  params["camSourcePath"] = "/stream1";
  params["camCapCmd"] = 2;
  EXPECT_EQ(recorder.Post("CamCapRemote", params).json["data"], recorder.Get("CamCap", "vendor=User").json["data"]);
}

TEST(Methods, BatchKeepsItsOrderAndFailsBadRowsAlone) {
  const std::map<std::string, int> codes = {
      {"ok", 0}, {"unreachable", 462}, {"timedOut", 463}, {"loginRefused", 464}, {"noSuchStream", 465}, {"busy", 467}};
  const SimCameras cameras(
      List({Camera("good"), Faulty("refused", "refused"), Faulty("silent", "silentAfterConnect"),
            Faulty("busy", "describe453"), Faulty("strange", "garbage"),
            Camera("web", ParseJson(R"({"stream": {"path": "/o"}, "snapshot": {"path": "/stream1"}})"))}));
  const TestRecorder recorder({.workers = 1, .deny = {"127.0.0.9"}});
  const int good = cameras.Port("good");
  Json::Value blocked = BatchRow("blocked", good, kSecret);
  blocked["ip"] = "127.0.0.9";
  Json::Value untested = BatchRow("untested", good, "wrong");
  untested["isAuth"] = true;
  Json::Value badPort = BatchRow("badPort", good, kSecret);
  badPort["port"] = "eighty";
  Json::Value badAndUnknown = BatchRow("badAndUnknown", good, kSecret, "Nobody x");
  badAndUnknown["port"] = "eighty";
  const std::pair<Json::Value, const char*> rows[] = {
      {BatchRow("1", good, kSecret), "ok"},
      {BatchRow("2", good, "wrong"), "loginRefused"},
      {BatchRow("3", cameras.Port("silent"), kSecret), "timedOut"},
      {"no row", "badRow"},
      {BatchRow("4", cameras.Port("refused"), kSecret), "unreachable"},
      {untested, "ok"},
      {BatchRow("5", good, kSecret, "Nobody x"), "unknownModel"},
      {BatchRow("6", good, kSecret, "User "), "noPath"},
      {BatchRow("7", good, kSecret, "Simcam RTSP-Path"), "noPath"},
      {badPort, "badRow"},
      {badAndUnknown, "badRow"},
      {blocked, "blocked"},
      {BatchRow("8", cameras.Port("busy"), kSecret), "busy"},
      {BatchRow("9", good, kSecret, "ONVIF Generic"), "noService"},
      {BatchRow("10", cameras.Port("strange"), kSecret), "notThisProtocol"},
      {BatchRow("11", good, kFakePass), "loginRefused"},
      {BatchRow("12", good, kSecret), "ok"},
      {BatchRow("13", cameras.Port("web"), kSecret, "Simcam RTSP-Any"), "noSuchStream"},
  };
  Json::Value list(Json::arrayValue);
  std::string wanted;
  for (const auto& [row, cause] : rows) {
    list.append(row);
    wanted += (wanted.empty() ? "" : ", ") + std::string(cause);
  }
  const Answer answer = recorder.Post("CamBatAddVerify", Batch(list));
  EXPECT_EQ(answer.cause, wanted);
  const Json::Value results = answer.json["data"]["resultList"];
  ASSERT_EQ(results.size(), list.size());
  for (Json::ArrayIndex i = 0; i < list.size(); ++i) {
    const auto& [row, cause] = rows[i];
    EXPECT_EQ(results[i]["tmpId"], row.isObject() ? row["tmpId"] : "");
    EXPECT_EQ(RowCode(results[i]), codes.contains(cause) ? codes.at(cause) : 468) << row << recorder.Log();
  }
  EXPECT_EQ(recorder.Post("CamBatAddVerify", Batch(Json::Value(Json::arrayValue))).cause, "") << "no row, no cause";

  Json::Value longList(Json::arrayValue);
  while (longList.size() < 1536) longList.append(untested);
  EXPECT_EQ(recorder.Post("CamBatAddVerify", Batch(longList)).cause.size(), 6142U);
  longList.append(untested);
  EXPECT_EQ(recorder.Post("CamBatAddVerify", Batch(longList)).head.find("Recorder-Cause"), std::string::npos)
      << "over 6 KiB";
}

TEST(Causes, WithoutAContactHaveTheirName) {
  const SimCameras cameras(List({Camera("camera"), Camera("asked", ParseJson(R"({"onvif": {}})"))}));
  const TestRecorder recorder;
  const int id = recorder.AddCamera("Simcam", "RTSP-H264", cameras.Port("camera"), "admin", kSecret);
  recorder.Control({"camera", "status", std::to_string(id), "disabled"});
  Json::Value params = CameraParams(cameras.Port("camera"), kSecret, "Nobody x");
  for (const char* method : kCameraMethods) EXPECT_EQ(recorder.Post(method, params).cause, "unknownModel") << method;
  params = CameraParams(cameras.Port("camera"), kSecret, "Simcam RTSP-Path");
  for (const char* method : {"GetSnapshot", "CamCapRemote", "CamCapUserDefineReso"}) {
    EXPECT_EQ(recorder.Post(method, params).cause, "noPath") << method;
  }
  for (const char* words :
       {"Nobody x\" cannot be asked: no model", "RTSP-Path\" cannot be asked: the path of its stream"}) {
    EXPECT_THAT(recorder.Log(), testing::HasSubstr(words));
  }
  params = CameraParams(cameras.Port("camera"), kSecret);
  params["camId"] = id;
  const Answer disabled = recorder.Post("GetSnapshot", params);
  EXPECT_EQ(disabled.cause, "disabled");
  EXPECT_THAT(DecodeBase64(disabled.json["data"]["img"].asString()), testing::StartsWith("\x89PNG"));
  params["jsonResponse"] = false;
  EXPECT_EQ(recorder.Post("GetSnapshot", params).cause, "disabled");
  EXPECT_EQ(cameras.Log("camera")["connections"].asInt(), 0);
  params["camCapCmd"] = 2;
  EXPECT_EQ(recorder.Post("CamCapRemote", params).cause, "ok") << "from the model's file";

  params = CameraParams(cameras.Port("camera"), kSecret, "User ");
  params["camSourcePath"] = "/nothing";
  params["camVdoType"] = "";
  for (const char* method : {"CameraTest", "GetSnapshot", "CamCapUserDefineReso"}) {
    EXPECT_EQ(recorder.Post(method, params).cause, "noSuchStream") << method << ": not what HTTP makes of it";
  }
  params = CameraParams(cameras.Port("asked"), kSecret, "ONVIF Generic");
  std::ofstream(recorder.StateFolder() / "capabilities") << "in the folder's place";
  EXPECT_EQ(recorder.Post("CamCapRemote", params).cause, "recorderFailed");
  EXPECT_EQ(recorder.Get("CamCap", "vendor=Nobody").cause, "") << "asks no camera";
}
