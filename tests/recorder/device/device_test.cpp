#include "platform/device.h"

#include <gtest/gtest.h>

#include "recorder/device/model/model_files.h"

namespace recorder {
namespace {

TEST(SnapshotPathTest, AChannelStaysInItsPlace) {
  SetModelFolders({MODELS_FOLDER});
  DeviceAPIHandler api;
  api.LoadByParam(DP_LOAD_FROM_MODEL_FILES, "cam", 8000, "", "", "Simcam", "VideoServer-4", "3/../x ?&~", "");
  std::string path;
  int port = 8000;
  int kind = 0;
  EXPECT_EQ(api.GetSnapshotPath(path, port, kind), 0);
  EXPECT_EQ(path, "/ch3%2F..%2Fx%20%3F%26~/stream1");
}

TEST(CapabilityTest, AnUnaskedCameraKeepsItsChannel) {
  CamCapHandler handler;
  ASSERT_EQ(handler.LoadCapability(DP_LOAD_FROM_MODEL_FILES, "PSIA", "Generic", "7", ""), 0);
  EXPECT_EQ(handler.GetChannelList(), (std::list<std::string>{"1", "7"}));
  EXPECT_EQ(handler.GetDefaultChannel(), "");
}

}  // namespace
}  // namespace recorder
