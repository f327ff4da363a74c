#include "recorder/net/rtsp/steady_cameras.h"

#include <gtest/gtest.h>

namespace recorder {
namespace {

TEST(SteadyCamerasTest, AreBounded) {
  SteadyCameras cameras;
  for (int port = 1; port <= 1025; ++port) cameras.Add("cam", port);
  EXPECT_FALSE(cameras.Has("cam", 1));
  EXPECT_TRUE(cameras.Has("CAM.", 2));
  cameras.Remove("cam", 2);
  EXPECT_FALSE(cameras.Has("cam", 2));
}

}  // namespace
}  // namespace recorder
