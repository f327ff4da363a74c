#include "platform/device.h"

#include <gtest/gtest.h>

#include "recorder/device/check/device_api.h"
#include "recorder/device/model/model_files.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/files.h"
#include "rig/temp_folder.h"

namespace recorder {
namespace {

/// Kind and path of the picture of a camera at port 8000; kind and path of nothing when there is none.
std::pair<int, std::string> Picture(const char* vendor, const char* model, const char* sourcePath, int videoType,
                                    const char* channel = "") {
  SetModelsFolder(MODELS_FOLDER);
  DeviceAPIHandler api;
  api.LoadByParam(DP_LOAD_FROM_MODEL_FILES, "127.0.0.1", 8000, "", "", vendor, model, channel, sourcePath);
  EXPECT_TRUE(api.IsValid());
  if (api.NeedsSourcePath()) api.SelectVideoType(videoType, 0);
  std::pair<int, std::string> picture;
  int port = 8000;
  if (api.GetSnapshotPath(picture.second, port, picture.first) != 0) return {};
  EXPECT_EQ(port, 8000);
  return picture;
}

TEST(SnapshotPathTest, SaysWhereThePictureIs) {
  using Found = std::pair<int, std::string>;
  EXPECT_EQ(Picture("Simcam", "HTTP-Snapshot-Sizes", "", 0),
            Found(SNAPSHOT_KIND_HTTP_JPEG, "/snapshot.jpg?size=640x480"));
  EXPECT_EQ(Picture("Simcam", "VideoServer-4", "", 0, "3/../x ?&~"),
            Found(SNAPSHOT_KIND_STREAM, "/ch3%2F..%2Fx%20%3F%26~/stream1"));
  EXPECT_EQ(Picture("Simcam", "RTSP-Path", "", VIDEO_TYPE_H264), Found());
  EXPECT_EQ(Picture("User", "", "/live", VIDEO_TYPE_H265), Found(SNAPSHOT_KIND_STREAM, "/live"));
  EXPECT_EQ(Picture("User", "", "/live", VIDEO_TYPE_UNKNOWN), Found());
  EXPECT_EQ(Picture("User", "", "", VIDEO_TYPE_H264), Found());
}

TEST(DeviceTest, AnotherFileStandsInForAnUnreachableCameraIfAllowed) {
  SetModelsFolder(MODELS_FOLDER);
  CamProfile profile;
  profile.ip = "127.0.0.1";
  profile.port = 1;
  profile.vendor = "Simcam";
  profile.model = "HTTP-Snapshot-Sizes";
  std::string path;
  EXPECT_EQ(CamCapUtils::GetCamCapFile(profile, path, REMOTE_CAMCAP_ASK_NOW), CAMCAP_FILE_UNREACHABLE);
  EXPECT_EQ(path, "");
  EXPECT_EQ(CamCapUtils::GetCamCapFile(profile, path, REMOTE_CAMCAP_AS_NEEDED), CAMCAP_FILE_SUBSTITUTED);
  EXPECT_EQ(path, MODELS_FOLDER "/simcam.json");
}

TEST(DeviceTest, WhatCannotBeAskedIsLogged) {
  SetModelsFolder(MODELS_FOLDER);
  const std::pair<const char*, const char*> cases[] = {
      {"User ", "\"User \" cannot be asked: no model file knows it"},
      {"Nobody X", "\"Nobody X\" cannot be asked: no model file knows it"},
      {"Simcam RTSP-Path", "\"Simcam RTSP-Path\" cannot be asked: the path of its stream is missing"}};
  for (const auto& [cameraModel, words] : cases) {
    const std::string text = cameraModel;
    CamProfile profile;
    profile.vendor = text.substr(0, text.find(' '));
    profile.model = text.substr(text.find(' ') + 1);
    std::string path;
    testing::internal::CaptureStderr();
    EXPECT_EQ(CamCapUtils::GetCamCapFile(profile, path, REMOTE_CAMCAP_ASK_NOW), CAMCAP_FILE_NOT_UNDERSTOOD);
    EXPECT_NE(testing::internal::GetCapturedStderr().find(words), std::string::npos) << cameraModel;
  }
}

TEST(DeviceTest, AMissingPathIsLoggedWhereItWasWanted) {
  const std::string models = ReadFile(MODELS_FOLDER "/simcam.json");
  const std::string stream = R"({"kind": "stream"})";  // the last one is that of RTSP-Path
  for (const std::string& snapshot : {stream, std::string(R"({"kind": "http-jpeg", "path": "/x"})")}) {
    const rig::TempFolder folder;
    folder.Write("simcam.json", std::string(models).replace(models.rfind(stream), stream.size(), snapshot));
    std::filesystem::copy(MODELS_FOLDER "/schema.json", folder.Path());
    SetModelsFolder(folder.Path());
    const RequestScope scope(std::chrono::seconds(1));
    testing::internal::CaptureStderr();
    {
      DeviceAPIHandler api;
      api.LoadByParam(DP_LOAD_FROM_MODEL_FILES, "127.0.0.1", 1, "", "", "Simcam", "RTSP-Path", "", "");
      std::string path;
      int port = 1;
      int kind = 0;
      unsigned char* jpeg = nullptr;
      int size = 0;
      const bool isHttp = api.GetSnapshotPath(path, port, kind) == 0;
      if (isHttp) SnapshotGetFromAPI("127.0.0.1", 1, "", "", api, "", &jpeg, &size, VIDEO_TYPE_H264);
    }
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_EQ(log.find("path of its stream is missing") != std::string::npos, snapshot == stream) << snapshot << log;
  }
}

}  // namespace
}  // namespace recorder
