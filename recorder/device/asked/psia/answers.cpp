#include "recorder/device/asked/psia/answers.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "recorder/media/codecs.h"
#include "recorder/net/camera_address.h"
#include "recorder/net/percent.h"
#include "recorder/utility/cause_table.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"

namespace recorder::psia {
namespace {

constexpr int kHundredths = 100;
constexpr int kDeviceBusy = 2;  // statusCode of a ResponseStatus

constexpr std::string_view kChannelsPath = "/PSIA/Streaming/channels/";

XmlElement Child(const XmlElement& element, std::string_view name) { return element.Child(kAnyNamespace, name); }

bool IsTrue(std::string_view text) { return EqualsIgnoreCase(text, "true") || text == "1"; }

void AddOnce(std::vector<std::string>& values, std::string value) {
  if (value.empty() || values.size() >= kMostPsiaEntries) return;
  if (std::find(values.begin(), values.end(), value) == values.end()) values.push_back(std::move(value));
}

/// The values of a list such as "a,b,c".
std::vector<std::string> ReadList(std::string_view list) {
  std::vector<std::string> values;
  while (!list.empty() && values.size() < kMostPsiaEntries) {
    AddOnce(values, std::string(Trimmed(TakeUntil(list, ','))));
  }
  return values;
}

/// Every `step` from "min" to "max", at most 101 values: percent have no more.
std::vector<std::string> ReadRange(const XmlElement& element, int step) {
  constexpr std::size_t kMaxValues = 101;
  std::vector<std::string> values;
  const auto min = ParseNumber<int>(element.Attribute("min"));
  const auto max = ParseNumber<int>(element.Attribute("max"));
  if (!min || !max || *min < 0) return values;
  for (long long value = *min; value <= *max && values.size() < kMaxValues; value += step) {
    values.push_back(std::to_string(value));
  }
  return values;
}

/// `step`: between the values of a range; 0 for a setting whose range does not say what can be chosen.
Setting ReadSetting(const XmlElement& element, int step = 0) {
  Setting setting;
  setting.current = element.Text();
  setting.values = ReadList(element.Attribute("opt"));
  if (setting.values.empty() && step > 0) setting.values = ReadRange(element, step);
  return setting;
}

/// A page for people, or no XML at all.
bool IsPage(const HttpAnswer& answer) {
  const std::string_view text = Trimmed(answer.body);
  return !text.starts_with('<') || StartsWithIgnoreCase(text, "<!doctype html") ||
         StartsWithIgnoreCase(text, "<html") || StartsWithIgnoreCase(answer.contentType, "text/html");
}

/// True when `text` closes `root`; the parser completes what ends early.
bool IsWhole(std::string_view text, const XmlElement& root) {
  const bool isOneTag = root.Children().empty() && Trimmed(text).ends_with("/>");
  const std::size_t begin = text.rfind("</");
  const std::size_t end = text.find('>', std::min(begin, text.size()));
  if (isOneTag || end == std::string_view::npos) return isOneTag;
  const std::string_view name = Trimmed(text.substr(begin + 2, end - begin - 2));
  return name.substr(name.rfind(':') + 1) == root.Name();
}

Outcome ResponseOutcome(const XmlElement& responseStatus, long status) {
  if (ParseNumber<int>(Child(responseStatus, "statusCode").Text()) == kDeviceBusy) return Outcome::kBusy;
  return status == kHttpOk ? Outcome::kNotUnderstood : OutcomeOfHttp(status);
}

Outcome AnswerOutcome(const HttpAnswer& answer, const XmlElement& root,
                      std::initializer_list<std::string_view> wanted) {
  if (answer.outcome != Outcome::kOk) return answer.outcome;
  if (root.Name() == "ResponseStatus") return ResponseOutcome(root, answer.status);
  if (answer.status != kHttpOk) return OutcomeOfHttp(answer.status);
  const bool isWanted = std::find(wanted.begin(), wanted.end(), root.Name()) != wanted.end();
  if (isWanted) return IsWhole(answer.body, root) ? Outcome::kOk : Outcome::kNotUnderstood;
  return IsPage(answer) ? Outcome::kNotThisProtocol : Outcome::kNotUnderstood;
}

bool IsPathSegment(std::string_view id) { return !id.empty() && !HoldsControls(id); }

/// The recorder's name of a codec, or "".
std::string CodecName(std::string_view name) { return std::string(NameOfPsiaCodec(name)); }

/// What can be chosen, the current value included, which is the one to begin with; nothing when there is nothing.
std::optional<Choices> MakeChoices(std::vector<std::string> values, const std::string& current) {
  const bool isListed = std::find(values.begin(), values.end(), current) != values.end();
  if (!current.empty() && !isListed) values.push_back(current);
  if (values.empty()) return std::nullopt;
  std::string preset = current.empty() ? values.front() : current;
  return Choices{std::move(values), std::move(preset)};
}

/// Whole frames a second of a rate in hundredths; "" when it is none.
std::string WholeFrames(const std::string& hundredths) {
  const auto rate = ParseNumber<int>(hundredths);
  return rate && *rate > 0 ? std::to_string(std::max(1, *rate / kHundredths)) : "";
}

std::optional<Choices> FrameRates(const Setting& setting) {
  std::vector<std::string> rates;
  for (const std::string& value : setting.values) AddOnce(rates, WholeFrames(value));
  return MakeChoices(std::move(rates), WholeFrames(setting.current));
}

/// "1280x720"; "" when it is no size.
std::string Size(const std::string& width, const std::string& height) {
  const bool isSize = ParseNumber<int>(width).value_or(0) > 0 && ParseNumber<int>(height).value_or(0) > 0;
  return isSize ? width + "x" + height : "";
}

/// Widths and heights stand in lists of their own, which belong together position by position when they are of one
/// length.
std::optional<Choices> Resolutions(const StreamingChannel& channel) {
  std::vector<std::string> sizes;
  const std::size_t count = channel.width.values.size();
  if (count == channel.height.values.size()) {
    for (std::size_t i = 0; i < count; ++i) AddOnce(sizes, Size(channel.width.values[i], channel.height.values[i]));
  }
  return MakeChoices(std::move(sizes), Size(channel.width.current, channel.height.current));
}

}  // namespace

Reading ReadAnswer(const HttpAnswer& answer, std::initializer_list<std::string_view> wanted) {
  XmlDocument document(answer.body);
  const Outcome outcome = AnswerOutcome(answer, document.Root(), wanted);
  return {outcome, std::move(document)};
}

std::string ReadDevice(const XmlElement& deviceInfo) {
  const std::string device = deviceInfo.ChildTexts(kAnyNamespace, {"manufacturer", "model", "firmwareVersion"});
  return device.empty() ? Child(deviceInfo, "deviceName").Text() : device;
}

std::string ReadMaker(const XmlElement& deviceInfo) { return Child(deviceInfo, "manufacturer").Text(); }

std::string ReadModelName(const XmlElement& deviceInfo) { return Child(deviceInfo, "model").Text(); }

StreamingChannel ReadChannel(const XmlElement& streamingChannel) {
  StreamingChannel channel;
  channel.id = Child(streamingChannel, "id").Text();
  const XmlElement enabled = Child(streamingChannel, "enabled");
  channel.isEnabled = !enabled || IsTrue(enabled.Text());

  const XmlElement transport = Child(streamingChannel, "Transport");
  for (const XmlElement& control : Child(transport, "ControlProtocolList").Children(kAnyNamespace, "ControlProtocol")) {
    const XmlElement name = Child(control, "streamingTransport");
    const std::vector<std::string> options = ReadList(name.Attribute("opt"));
    channel.hasHttp =
        channel.hasHttp || name.Text() == "HTTP" || std::find(options.begin(), options.end(), "HTTP") != options.end();
  }
  const auto port = ParseNumber<int>(Child(transport, "rtspPortNo").Text());
  if (port && *port >= 1 && *port <= kLargestPort) channel.rtspPort = port;

  const XmlElement video = Child(streamingChannel, "Video");
  channel.hasVideo = static_cast<bool>(video);
  channel.input = Child(video, "videoInputChannelID").Text();
  channel.codec = ReadSetting(Child(video, "videoCodecType"));
  channel.width = ReadSetting(Child(video, "videoResolutionWidth"));
  channel.height = ReadSetting(Child(video, "videoResolutionHeight"));
  channel.quality = ReadSetting(Child(video, "fixedQuality"), 1);
  channel.frameRate = ReadSetting(Child(video, "maxFrameRate"), kHundredths);

  const XmlElement audio = Child(streamingChannel, "Audio");
  channel.hasAudio =
      IsTrue(Child(audio, "enabled").Text()) || !Child(audio, "audioCompressionType").Attribute("opt").empty();
  return channel;
}

std::vector<StreamingChannel> ReadChannels(const XmlElement& streamingChannelList) {
  std::vector<StreamingChannel> channels;
  for (const XmlElement& element : streamingChannelList.Children(kAnyNamespace, "StreamingChannel")) {
    if (channels.size() >= kMostPsiaEntries) break;
    StreamingChannel channel = ReadChannel(element);
    const bool isKnown =
        std::any_of(channels.begin(), channels.end(), [&](const auto& other) { return other.id == channel.id; });
    if (IsPathSegment(channel.id) && !isKnown) channels.push_back(std::move(channel));
  }
  return channels;
}

int CountInputs(const XmlElement& inputPortList) {
  return static_cast<int>(inputPortList.Children(kAnyNamespace, "IOInputPort").size());
}

std::vector<std::string> ReadMotionChannels(const XmlElement& motionDetection,
                                            const std::vector<StreamingChannel>& channels, const std::string& asked) {
  std::vector<XmlElement> detections = motionDetection.Children(kAnyNamespace, "MotionDetection");
  if (motionDetection.Name() == "MotionDetection") detections.push_back(motionDetection);
  std::vector<std::string> names;
  for (const XmlElement& detection : detections) AddOnce(names, Child(detection, "id").Text());
  std::vector<std::string> found;
  for (const StreamingChannel& channel : channels) {
    const bool isNamed = std::any_of(names.begin(), names.end(), [&](const std::string& name) {
      return name == channel.id || name == channel.input;
    });
    if (isNamed) found.push_back(channel.id);
  }
  if (found.empty() && !detections.empty()) found.push_back(asked);
  return found;
}

bool FillIn(const StreamingChannel& channel, CameraReport& report) {
  std::vector<std::string> codecs;
  for (const std::string& value : channel.codec.values) AddOnce(codecs, CodecName(value));
  const std::string codec = CodecName(channel.codec.current);
  AddOnce(codecs, codec);
  if (codecs.empty()) return false;

  report.codecs.clear();
  for (std::string& name : codecs) {
    const bool hasHttp = channel.hasHttp && CodecOfName(name)->isOverHttp;
    report.codecs.push_back(
        {std::move(name), hasHttp ? std::vector<std::string>{"RTSP", "HTTP"} : std::vector<std::string>{"RTSP"}});
  }
  report.codec = codec;
  report.frameRates = FrameRates(channel.frameRate);
  report.resolutions = Resolutions(channel);
  report.qualities = MakeChoices(channel.quality.values, channel.quality.current);
  report.streamCount = 1;  // a channel of this API is one stream

  const std::string path = std::string(kChannelsPath) + PercentEncoded(channel.id, kUnreservedSigns);
  report.stream = {path, channel.rtspPort.value_or(kRtspPort)};
  report.snapshot = ModelPath{path + "/picture?snapShotImageType=JPEG", std::nullopt};
  return true;
}

}  // namespace recorder::psia
