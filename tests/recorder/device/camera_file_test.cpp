#include <gtest/gtest.h>

#include "recorder/device/asked/camera_file_text.h"
#include "recorder/device/model/model_files.h"

namespace recorder {
namespace {

CameraReport Report() {
  CameraReport report;
  report.channels = {"1", "2"};
  report.channel = "2";
  report.codecs = {{"H.265", {"RTSP"}}};
  report.codec = "H.265";
  report.stream = {"/two", 8554};
  return report;
}

std::string TextOf(const CameraReport& report) { return CameraFileText("ONVIF", "cam:80", report, 1'700'000'000, {}); }

std::shared_ptr<const VendorModels> Read(const std::string& text) {
  SetModelFolders({MODELS_FOLDER});
  std::vector<ModelMistake> mistakes;
  auto models = ReadModelText(text, "a camera's file", mistakes);
  for (const ModelMistake& mistake : mistakes) ADD_FAILURE() << mistake.place << ": " << mistake.text;
  return models;
}

TEST(CameraFileTest, WhateverACameraSaysBecomesAFileThatCanBeRead) {
  CameraReport report = Report();
  report.device = std::string(1000, 'x');
  report.channels = {"2", "2", "", std::string(100, 'c'), "bad\xFF", "line\nend"};
  report.resolutions = Choices{{"640x480", "640x480", "\x1b[31m"}, "not there"};
  report.frameRates = Choices{{}, "25"};
  report.qualities = Choices{std::vector<std::string>(1000, "q"), "q"};
  report.codecs.push_back({"H.264", {"RTSP"}});
  report.otherStreams = {{.codec = "H.264", .from = {'/' + std::string(3000, 'x'), 554}}};
  report.digitalInputs = 2'000'000'000;
  report.media = OnvifMedia{"/media", true, {{"H.264", std::string(100, 't')}}};
  report.streamCount = -5;
  const auto models = Read(TextOf(report));
  ASSERT_TRUE(models);
  const Model* model = &models->models.front();
  EXPECT_EQ(model->channels.values, std::vector<std::string>{"2"});
  EXPECT_EQ(model->resolutions.values, std::vector<std::string>{"640x480"});
  EXPECT_EQ(model->resolutions.preset, "640x480");
  EXPECT_TRUE(model->frameRates.values.empty());
  EXPECT_EQ(model->streams.size(), 1U) << "a path that is too long is no reason to keep nothing";
  EXPECT_EQ(model->digitalInputs, 256);
  EXPECT_EQ(model->streamCount, 1);
}

TEST(CameraFileTest, HoldsTheAskedChannelOfMoreThanThereIsRoomFor) {
  CameraReport report = Report();
  report.channels.clear();
  for (int channel = 1; channel <= 130; ++channel) report.channels.push_back(std::to_string(channel));
  report.channel = "130";
  const auto models = Read(TextOf(report));
  ASSERT_TRUE(models);
  EXPECT_EQ(models->models.front().channels.values.back(), "130");
}

}  // namespace
}  // namespace recorder
