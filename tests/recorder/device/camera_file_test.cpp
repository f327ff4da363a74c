#include <gtest/gtest.h>

#include "recorder/device/camera_file_text.h"
#include "recorder/device/model_files.h"

namespace recorder {
namespace {

CameraFacts Facts() {
  CameraFacts facts;
  facts.channels = {"1", "2"};
  facts.channel = "2";
  facts.codecs = {{"H.265", {"RTSP"}}};
  facts.codec = "H.265";
  facts.stream = {"/two", 8554};
  return facts;
}

std::shared_ptr<const Model> Written(const CameraFacts& facts, const Model* earlier = nullptr) {
  SetModelsFolder(MODELS_FOLDER);
  return ReadFutureFile("a camera's file", CameraFileText("ONVIF", "cam:80", facts, 1'700'000'000, earlier));
}

TEST(CameraFileTest, PathsOfOtherChannelsStayAsLongAsTheCameraHasThem) {
  CameraFacts facts = Facts();
  const auto first = Written(facts);
  ASSERT_TRUE(first);
  EXPECT_EQ(first->stream->For("1"), nullptr);
  EXPECT_EQ(first->stream->For("2")->port, 8554);
  facts.channel = "1";
  facts.stream = {"/one", std::nullopt};
  const auto second = Written(facts, first.get());
  EXPECT_EQ(second->stream->For("1")->path, "/one");
  EXPECT_EQ(second->stream->For("2")->path, "/two");
  facts.channels = {"1"};
  EXPECT_EQ(Written(facts, second.get())->stream->For("2"), nullptr);
}

TEST(CameraFileTest, WhateverACameraSaysBecomesAFileThatCanBeRead) {
  CameraFacts facts = Facts();
  facts.device = std::string(1000, 'x');
  facts.channels = {"2", "2", "", std::string(100, 'c'), "bad\xFF", "line\nend"};
  facts.resolutions = Choices{{"640x480", "640x480", "\x1b[31m"}, "not there"};
  facts.frameRates = Choices{{}, "25"};
  facts.qualities = Choices{std::vector<std::string>(1000, "q"), "q"};
  facts.digitalInputs = 2'000'000'000;
  facts.streamCount = -5;
  const auto model = Written(facts);
  ASSERT_TRUE(model);
  EXPECT_EQ(model->channels.values, std::vector<std::string>{"2"});
  EXPECT_EQ(model->resolutions.values, std::vector<std::string>{"640x480"});
  EXPECT_EQ(model->resolutions.preset, "640x480");
  EXPECT_TRUE(model->frameRates.values.empty());
  EXPECT_EQ(model->digitalInputs, 256);
  EXPECT_EQ(model->streamCount, 1);
}

}  // namespace
}  // namespace recorder
