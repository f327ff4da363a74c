#include <gtest/gtest.h>

#include <sstream>

#include "recorder/device/asked/camera_file_text.h"
#include "recorder/device/model/model_files.h"

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

std::string TextOf(const CameraFacts& facts, const std::string& earlier = "null") {
  Json::Value json;
  std::istringstream(earlier) >> json;
  return CameraFileText("ONVIF", "cam:80", facts, 1'700'000'000, json);
}

std::shared_ptr<const VendorModels> Read(const std::string& text) {
  SetModelsFolder(MODELS_FOLDER);
  std::vector<ModelMistake> mistakes;
  auto models = ReadModelText(text, "a camera's file", mistakes);
  for (const ModelMistake& mistake : mistakes) ADD_FAILURE() << mistake.place << ": " << mistake.text;
  return models;
}

TEST(CameraFileTest, OtherChannelsStayAsLongAsTheCameraHasThem) {
  CameraFacts facts = Facts();
  const std::string two = TextOf(facts);
  EXPECT_EQ(Read(two)->models.at(0).stream->port, 8554);
  facts.channel = "1";
  facts.stream = {"/one", std::nullopt};
  const std::string both = TextOf(facts, two);
  ASSERT_EQ(Read(both)->models.size(), 2U);
  EXPECT_EQ(Read(both)->models[0].stream->path, "/one");
  EXPECT_EQ(Read(both)->models[1].stream->path, "/two");
  EXPECT_EQ(Read(TextOf(facts, both))->models.size(), 2U);
  facts.channels = {"1"};
  EXPECT_EQ(Read(TextOf(facts, both))->models.size(), 1U);
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
  const auto models = Read(TextOf(facts));
  ASSERT_TRUE(models);
  const Model* model = &models->models.front();
  EXPECT_EQ(model->channels.values, std::vector<std::string>{"2"});
  EXPECT_EQ(model->resolutions.values, std::vector<std::string>{"640x480"});
  EXPECT_EQ(model->resolutions.preset, "640x480");
  EXPECT_TRUE(model->frameRates.values.empty());
  EXPECT_EQ(model->digitalInputs, 256);
  EXPECT_EQ(model->streamCount, 1);
}

}  // namespace
}  // namespace recorder
