#include "platform/device.h"

#include <gtest/gtest.h>

#include "recorder/device/check/device_api.h"
#include "recorder/device/model/model_files.h"

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

TEST(CapabilityTest, AnUnaskedCameraKeepsItsChannel) {
  CamCapHandler handler;
  ASSERT_EQ(handler.LoadCapability(DP_LOAD_FROM_MODEL_FILES, "PSIA", "Generic", "7", ""), 0);
  EXPECT_EQ(handler.GetChannelList(), (std::list<std::string>{"1", "7"}));
  EXPECT_EQ(handler.GetDefaultChannel(), "");
}

}  // namespace
}  // namespace recorder
