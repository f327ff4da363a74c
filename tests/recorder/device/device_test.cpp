#include "platform/device.h"

#include <gtest/gtest.h>

#include "recorder/device/model/model_files.h"

namespace recorder {
namespace {

TEST(CapabilityTest, AnUnaskedCameraKeepsItsChannel) {
  CamCapHandler handler;
  ASSERT_EQ(handler.LoadCapability(DP_LOAD_FROM_MODEL_FILES, "PSIA", "Generic", "7", ""), 0);
  EXPECT_EQ(handler.GetChannelList(), (std::list<std::string>{"1", "7"}));
  EXPECT_EQ(handler.GetDefaultChannel(), "");
}

}  // namespace
}  // namespace recorder
