#include <algorithm>
#include <string>

#include "recorder/device/asked/onvif/answers.h"
#include "recorder/device/asked/onvif/motion.h"
#include "recorder/device/asked/onvif/profiles.h"
#include "recorder/device/asked/onvif/soap.h"
#include "recorder/device/asked/onvif/uri.h"
#include "recorder/device/asked/onvif/video_report.h"
#include "recorder/device/asked/psia/answers.h"
#include "recorder/device/asked/xml.h"
#include "tests/fuzz/fuzz.h"

// One answer of a camera, of any content, through the XML reader and all that reads its documents. Beside what the
// sanitizers find, what readers promise of their results is checked here.

namespace recorder {
namespace {

void CheckChoices(const std::optional<Choices>& choices, std::size_t most) {
  if (!choices) return;
  Require(choices->values.size() <= most);
  Require(std::find(choices->values.begin(), choices->values.end(), choices->preset) != choices->values.end());
}

void ReadMedia(XmlElement answer, const onvif::Service& media) {
  onvif::OffersAudio(answer, media);
  const auto profiles = onvif::ReadProfiles(answer, media);
  const auto encoder = profiles.empty() ? std::nullopt : profiles.front().encoder;
  CameraReport report;
  onvif::ReportVideo(encoder.value_or(onvif::VideoEncoder{}), onvif::ReadVideoOptions(answer, media), report);
  CheckChoices(report.frameRates, 120);
  CheckChoices(report.resolutions, 257);
  CheckChoices(report.qualities, 102);
}

void ReadOnvif(XmlElement answer) {
  onvif::ReadClock(answer);
  onvif::ReadServices(answer);
  onvif::ReadCapabilities(answer);
  onvif::ReadDevice(answer);
  onvif::CountDigitalInputs(answer);
  onvif::HasMotionTopic(answer);
  onvif::SnapshotPath(onvif::ReadUri(answer), 80);
  for (const onvif::Service& media : {onvif::kMedia1, onvif::kMedia2}) ReadMedia(answer, media);
}

void ReadPsia(const HttpAnswer& answer) {
  const auto reading = psia::ReadAnswer(answer, {"StreamingChannel", "StreamingChannelList", "DeviceInfo",
                                                 "IOInputPortList", "MotionDetection", "MotionDetectionList"});
  const XmlElement root = reading.document.Root();
  psia::ReadDevice(root);
  psia::CountInputs(root);
  const auto channels = psia::ReadChannels(root);
  psia::ReadMotionChannels(root, channels, "1");
  CameraReport report;
  psia::FillIn(channels.empty() ? psia::ReadChannel(root) : channels.front(), report);
}

}  // namespace

void RunInput(std::string_view input) {
  const HttpAnswer answer{Outcome::kOk, 200, "application/xml", std::string(input)};
  ReadPsia(answer);

  bool isReadByName = false;
  const XmlDocument document(answer.body, &isReadByName);
  ReadOnvif(document.Root());
  for (const XmlElement part : document.Root().Children()) {
    for (const XmlElement content : part.Children()) {
      ReadOnvif(content);
      onvif::ReadReply(answer, content.Namespace(), content.Name(), &isReadByName);
    }
  }
}

}  // namespace recorder
