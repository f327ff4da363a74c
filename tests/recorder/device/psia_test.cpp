#include <gtest/gtest.h>

#include <thread>

#include "recorder/device/asked/psia/answers.h"
#include "recorder/device/asked/psia/ask.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/files.h"
#include "recorder/utility/limits.h"
#include "tests/recorder/device/scripted_port.h"

namespace recorder::psia {
namespace {

using Texts = std::vector<std::string>;

std::string Data(const std::string& name) { return ReadFile(std::filesystem::path(DATA_FOLDER) / "psia" / name); }

TEST(PsiaAskTest, SilenceLeavesWhatIsKnown) {
  const ScriptedPort port([](const Question& asked) -> Answer {
    if (asked.path == "/PSIA/System/IO/inputs") std::this_thread::sleep_for(std::chrono::milliseconds(900));
    const bool isOfAll = asked.path == "/PSIA/Streaming/channels";
    const bool isOfOne = asked.path.ends_with("/capabilities");
    return {200, "", Data(isOfAll ? "channels.xml" : isOfOne ? "capabilities.xml" : "device.xml")};
  });
  const RequestScope scope(std::chrono::milliseconds(800));
  CameraReport report;
  EXPECT_EQ(Ask({"127.0.0.1", port.Number(), "admin", "secret"}, "", report), Outcome::kOk);
  EXPECT_EQ(report.codecs.size(), 3U);
  EXPECT_EQ(report.digitalInputs, std::nullopt);
}

Outcome OutcomeOf(const std::string& file, long status = kHttpOk) {
  return ReadAnswer({Outcome::kOk, status, "application/xml", Data(file)}, {"DeviceInfo"}).outcome;
}

TEST(PsiaAnswerTest, HasItsOutcome) {
  EXPECT_EQ(OutcomeOf("device.xml"), Outcome::kOk);
  EXPECT_EQ(OutcomeOf("inputs.xml"), Outcome::kNotUnderstood) << "another document";
  EXPECT_EQ(OutcomeOf("invalid.xml"), Outcome::kNotUnderstood);
  EXPECT_EQ(OutcomeOf("busy.xml"), Outcome::kBusy);
  EXPECT_EQ(OutcomeOf("busy.xml", 500), Outcome::kBusy);
  EXPECT_EQ(OutcomeOf("device.xml", 404), Outcome::kNoSuchStream) << "the status comes before the content";
}

CameraReport ReportOf(const std::string& file) {
  const XmlDocument document(Data(file));
  CameraReport report;
  EXPECT_TRUE(FillIn(ReadChannel(document.Root()), report));
  return report;
}

std::vector<std::string> NamesOf(const std::vector<ModelCodec>& codecs) {
  std::vector<std::string> names;
  names.reserve(codecs.size());
  for (const ModelCodec& codec : codecs) names.push_back(codec.name);
  return names;
}

TEST(PsiaChannelTest, SaysWhatCanBeChosen) {
  const CameraReport report = ReportOf("capabilities.xml");
  EXPECT_EQ(NamesOf(report.codecs), (Texts{"MPEG4", "MJPEG", "H.264"}));
  EXPECT_EQ(report.codecs[1].streamTypes, (Texts{"RTSP", "HTTP"}));
  EXPECT_EQ(report.codec, "H.264");
  EXPECT_EQ(report.resolutions->values, (Texts{"640x480", "1280x720", "1920x1080"}));
  EXPECT_EQ(report.resolutions->preset, "1280x720");
  EXPECT_EQ(report.frameRates->values, (Texts{"30", "25", "12", "1"}));
  EXPECT_EQ(report.frameRates->preset, "25");
  EXPECT_EQ(report.qualities->values.size(), 100U);
  EXPECT_EQ(report.qualities->preset, "60");
  EXPECT_EQ(report.stream.path, "/PSIA/Streaming/channels/101");
  EXPECT_EQ(report.stream.port, 10554);
}

TEST(PsiaChannelTest, OfAnotherMakerMakesSenseToo) {
  const CameraReport report = ReportOf("odd-channel.xml");
  EXPECT_EQ(NamesOf(report.codecs), (Texts{"H.265", "H.264"}));
  EXPECT_EQ(report.resolutions->values, (Texts{"720x576"})) << "the lists do not belong together";
  EXPECT_EQ(report.qualities->values, (Texts{"20", "40", "60", "50"}));
  EXPECT_EQ(report.qualities->preset, "50");
  EXPECT_EQ(report.frameRates->values, (Texts{"1", "2", "3", "4"}));
  EXPECT_EQ(report.stream.port, 554) << "what the camera says is no port";
}

TEST(PsiaChannelTest, ListHoldsThoseThatAPathCanName) {
  const XmlDocument list(Data("channels.xml"));
  const std::vector<StreamingChannel> channels = ReadChannels(list.Root());
  ASSERT_EQ(channels.size(), 2U);
  EXPECT_EQ(channels[0].id, "101");
  EXPECT_FALSE(channels[0].isEnabled);
  EXPECT_FALSE(channels[0].hasAudio);
  EXPECT_TRUE(channels[1].hasAudio);
  CameraReport report;
  EXPECT_FALSE(FillIn(channels[0], report)) << "no codec";
  ASSERT_TRUE(FillIn(channels[1], report));
  EXPECT_EQ(report.snapshot->path, "/PSIA/Streaming/channels/yard%202/picture?snapShotImageType=JPEG");

  const XmlDocument motion(Data("motion.xml"));
  EXPECT_EQ(ReadMotionChannels(motion.Root(), channels, "101"), (Texts{"yard 2"})) << "by its video input";
  EXPECT_EQ(ReadMotionChannels(motion.Root(), {}, "101"), (Texts{"101"}));
}

TEST(PsiaChannelTest, EndlessListsAreCut) {
  std::string many;
  for (int i = 0; i < 1'000; ++i) many += std::to_string(i) + ",";
  const XmlDocument document("<StreamingChannel><Video><fixedQuality opt=\"" + many +
                             "\"/></Video></StreamingChannel>");
  EXPECT_EQ(ReadChannel(document.Root()).quality.values.size(), kMostPsiaEntries);
}

}  // namespace
}  // namespace recorder::psia
