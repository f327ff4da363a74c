#include "simcam/psia.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <vector>

#include "simcam/picture.h"
#include "simcam/xml_text.h"

namespace simcam {
namespace {

/// A failure by the standard's statusCode and statusString.
struct Failure {
  int status;
  int code;
  const char* text;
};
constexpr Failure kInvalidOperation = {404, 4, "Invalid Operation"};
constexpr Failure kWrongMethod = {405, 4, "Invalid Operation"};
constexpr Failure kInvalidContent = {400, 6, "Invalid XML Content"};

/// An element as the standard has them below no other, and some within.
std::string Tagged(const std::string& name, const std::string& content) {
  return "<" + name + " version=\"1.0\" xmlns=\"urn:psialliance-org\">" + content + "</" + name + ">";
}

HttpAnswer Document(const std::string& name, const std::string& content, int status = 200) {
  return {status, "application/xml; charset=\"UTF-8\"",
          "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + Tagged(name, content) + "\n"};
}

HttpAnswer Refuse(const Request& request, const Failure& failure) {
  return Document("ResponseStatus",
                  Fill("<requestURL>{url}</requestURL><statusCode>{code}</statusCode>"
                       "<statusString>{text}</statusString>",
                       {{"url", Escape(request.Path())}, {"code", failure.code}, {"text", failure.text}}),
                  failure.status);
}

std::string DeviceInfo(const CameraConfig& camera) {
  return Fill(
      "<deviceName>{name}</deviceName><deviceID>51AC0DE5</deviceID>"
      "<deviceDescription>simulated camera</deviceDescription><model>simcam</model>"
      "<serialNumber>51AC0DE5</serialNumber><macAddress>02:00:51:ac:0d:e5</macAddress>"
      "<firmwareVersion>1.0</firmwareVersion>",
      {{"name", Escape(camera.name)}});
}

std::string Inputs(const PsiaConfig& psia) {
  std::string ports;
  for (int i = 1; i <= psia.inputs; ++i) {
    ports += "<IOInputPort><id>" + std::to_string(i) + "</id><triggering>high</triggering></IOInputPort>";
  }
  return ports;
}

std::string MotionDetection() {
  return Tagged("MotionDetection",
                "<id>1</id><enabled>true</enabled><samplingInterval>2</samplingInterval>"
                "<startTriggerTime>500</startTriggerTime><endTriggerTime>1000</endTriggerTime>");
}

/// What may be chosen, as attributes of a capabilities document: the codecs, sizes and rates that the channels have.
struct Choices {
  std::string codecs;
  std::string widths;
  std::string heights;
  std::string rates;
};

void AddWord(std::string& list, const std::string& word) { list += (list.empty() ? "" : ",") + word; }

Choices ChoicesOf(const PsiaConfig& psia) {
  Choices choices;
  std::vector<const Codec*> codecs;
  std::vector<Size> sizes;
  int fastest = 0;
  for (const PsiaChannel& channel : psia.channels) {
    const StreamConfig& stream = channel.stream;
    fastest = std::max(fastest, stream.fps);
    if (std::find(codecs.begin(), codecs.end(), stream.codec) == codecs.end()) {
      codecs.push_back(stream.codec);
      AddWord(choices.codecs, stream.codec->psia);
    }
    if (std::find(sizes.begin(), sizes.end(), stream.size) == sizes.end()) {
      sizes.push_back(stream.size);
      AddWord(choices.widths, std::to_string(stream.size.width));
      AddWord(choices.heights, std::to_string(stream.size.height));
    }
  }
  choices.rates = RatesUpTo(fastest, 100, ",");
  return choices;
}

/// A channel. The capabilities are the same document with attributes that tell what may be chosen.
std::string Channel(const PsiaChannel& channel, int port, const Choices* choices) {
  const auto attribute = [choices](const char* name, const std::string& value) {
    return choices == nullptr ? "" : std::string(" ") + name + "=\"" + value + "\"";
  };
  const auto range = [choices](int least, int most) {
    return choices == nullptr ? "" : Fill(" min=\"{least}\" max=\"{most}\"", {{"least", least}, {"most", most}});
  };
  const Choices none;
  const Choices& all = choices == nullptr ? none : *choices;
  const StreamConfig& stream = channel.stream;
  const std::string audio = stream.audio == Audio::kNone ? ""
                                                         : "<Audio><enabled>true</enabled><audioInputChannelID>1"
                                                           "</audioInputChannelID><audioCompressionType>G.711alaw"
                                                           "</audioCompressionType></Audio>";
  return Fill(
      "<id>{id}</id><channelName{nameRange}>Channel {id}</channelName>"
      "<enabled{enabledOpt}>{enabled}</enabled><Transport><rtspPortNo{portRange}>{port}</rtspPortNo>"
      "<ControlProtocolList><ControlProtocol><streamingTransport{transportOpt}>RTSP</streamingTransport>"
      "</ControlProtocol></ControlProtocolList><Unicast><enabled>true</enabled></Unicast></Transport>"
      "<Video><enabled>true</enabled><videoInputChannelID>1</videoInputChannelID>"
      "<videoCodecType{codecOpt}>{codec}</videoCodecType><videoScanType>progressive</videoScanType>"
      "<videoResolutionWidth{widthOpt}>{width}</videoResolutionWidth>"
      "<videoResolutionHeight{heightOpt}>{height}</videoResolutionHeight>"
      "<videoQualityControlType{controlOpt}>CBR</videoQualityControlType>"
      "<constantBitRate{bitrateRange}>{bitrate}</constantBitRate><fixedQuality{qualityOpt}>60</fixedQuality>"
      "<maxFrameRate{rateOpt}>{rate}</maxFrameRate>"
      "<keyFrameInterval{gopRange}>{gop}</keyFrameInterval>"
      "<snapShotImageType{imageOpt}>JPEG</snapShotImageType></Video>{audio}",
      {{"id", channel.id},
       {"nameRange", range(0, 32)},
       {"enabledOpt", attribute("opt", "true,false")},
       {"enabled", channel.enabled ? "true" : "false"},
       {"portRange", range(1, 65535)},
       {"port", port},
       {"transportOpt", attribute("opt", "RTSP")},
       {"codecOpt", attribute("opt", all.codecs)},
       {"codec", stream.codec->psia},
       {"widthOpt", attribute("opt", all.widths)},
       {"width", stream.size.width},
       {"heightOpt", attribute("opt", all.heights)},
       {"height", stream.size.height},
       {"controlOpt", attribute("opt", "CBR,VBR")},
       {"bitrateRange", range(50, 100000)},
       {"bitrate", stream.bitrate},
       {"qualityOpt", attribute("opt", "20,40,60,80,100")},
       {"rateOpt", attribute("opt", all.rates)},
       {"rate", stream.fps * 100},
       {"gopRange", range(1, 1000000)},
       {"gop", stream.gop * 1000 / stream.fps},
       {"imageOpt", attribute("opt", "JPEG")},
       {"audio", audio}});
}

std::string Channels(const PsiaConfig& psia, int port) {
  std::string channels;
  for (const PsiaChannel& channel : psia.channels) {
    channels += Tagged("StreamingChannel", Channel(channel, port, nullptr));
  }
  return channels;
}

/// A number of a query; nothing if it is not asked for, 0 if it is none.
std::optional<int> QueryNumber(const std::string& query, const std::string& name) {
  const size_t at = ("&" + query).find("&" + name + "=");
  if (at == std::string::npos) return std::nullopt;
  const std::string text = query.substr(at + name.size() + 1, query.find('&', at) - at - name.size() - 1);
  int number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

/// A picture in the size that the query asks for, which one of the channels must have.
HttpAnswer Picture(const PsiaConfig& psia, const PsiaChannel& channel, const std::string& query,
                   const Request& request) {
  if (!psia.picture || !channel.enabled) return Refuse(request, kInvalidOperation);
  const Size size = {QueryNumber(query, "videoResolutionWidth").value_or(channel.stream.size.width),
                     QueryNumber(query, "videoResolutionHeight").value_or(channel.stream.size.height)};
  const bool known = std::any_of(psia.channels.begin(), psia.channels.end(),
                                 [size](const PsiaChannel& other) { return other.stream.size == size; });
  return known ? HttpAnswer{200, kJpegType, TakeSnapshot(size)} : Refuse(request, kInvalidContent);
}

/// What is at a path, its query apart.
HttpAnswer Page(const CameraConfig& camera, int port, const std::string& path, const std::string& query,
                const Request& request) {
  const PsiaConfig& psia = *camera.psia;
  if (path == "/PSIA/System/deviceInfo") return Document("DeviceInfo", DeviceInfo(camera));
  if (path == "/PSIA/System/IO/inputs") return Document("IOInputPortList", Inputs(psia));
  if (path == "/PSIA/Custom/MotionDetection" && psia.motion) return Document("MotionDetectionList", MotionDetection());
  if (path == kPsiaChannelsPath) return Document("StreamingChannelList", Channels(psia, port));
  for (const PsiaChannel& channel : psia.channels) {
    const std::string& own = channel.stream.path;
    if (path == own) return Document("StreamingChannel", Channel(channel, port, nullptr));
    if (path == own + "/picture") return Picture(psia, channel, query, request);
    if (path != own + "/capabilities") continue;
    const Choices choices = ChoicesOf(psia);
    return Document("StreamingChannel", Channel(channel, port, &choices));
  }
  return Refuse(request, kInvalidOperation);
}

}  // namespace

HttpAnswer Psia::AnswerWell(const Request& request, const Entrance& entrance) {
  const Verdict verdict = login_.Check(request.method, request.target, request.Header("Authorization"));
  if (verdict.status != 200) return LoginAnswer(verdict);
  if (request.method != "GET") return Refuse(request, kWrongMethod);
  const std::string target = request.Path();
  const size_t mark = target.find('?');
  const std::string query = mark == std::string::npos ? "" : target.substr(mark + 1);
  return Page(camera_, entrance.port, target.substr(0, mark), query, request);
}

}  // namespace simcam
