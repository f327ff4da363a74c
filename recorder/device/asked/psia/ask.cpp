#include "recorder/device/asked/psia/ask.h"

#include <algorithm>
#include <utility>

#include "recorder/device/asked/psia/answers.h"
#include "recorder/net/http/http_session.h"
#include "recorder/net/percent.h"
#include "recorder/request/request_scope.h"

// At most six requests: device, channels, two for the chosen channel, inputs, motion detection.

namespace recorder::psia {
namespace {

/// Requests to one camera. What ended the conversation itself stays its outcome, and nothing is sent any more.
class Conversation {
 public:
  explicit Conversation(const CameraAddress& address) : session_(address) {}

  /// The document at `path`, whose root element must have one of the names `wanted`.
  Reading Get(const std::string& path, std::initializer_list<std::string_view> wanted) {
    HttpAnswer answer;
    answer.outcome = end_;
    if (!HasEnded()) answer = session_.Get(path);
    if (EndsConversation(answer.outcome)) end_ = answer.outcome;
    return ReadAnswer(answer, wanted);
  }

  /// As HttpSession has it.
  void EndBy(Clock::time_point end) { session_.EndBy(end); }

  bool HasEnded() const { return end_ != Outcome::kOk; }
  Outcome End() const { return end_; }

 private:
  HttpSession session_;
  Outcome end_ = Outcome::kOk;
};

/// Moves the default channel to the front: the first that is enabled.
void PutDefaultFirst(std::vector<StreamingChannel>& channels) {
  const auto enabled =
      std::find_if(channels.begin(), channels.end(), [](const StreamingChannel& channel) { return channel.isEnabled; });
  if (enabled != channels.end()) std::rotate(channels.begin(), enabled, enabled + 1);
}

StreamingChannel& Choose(std::vector<StreamingChannel>& channels, const std::string& id) {
  const auto chosen =
      std::find_if(channels.begin(), channels.end(), [&](const StreamingChannel& channel) { return channel.id == id; });
  return chosen == channels.end() ? channels.front() : *chosen;
}

/// A document of what can be chosen need not say what is chosen.
void KeepCurrent(StreamingChannel& channel, const StreamingChannel& listed) {
  for (const auto setting : {&StreamingChannel::codec, &StreamingChannel::width, &StreamingChannel::height,
                             &StreamingChannel::quality, &StreamingChannel::frameRate}) {
    if ((channel.*setting).current.empty()) (channel.*setting).current = (listed.*setting).current;
  }
  if (!channel.rtspPort) channel.rtspPort = listed.rtspPort;
}

/// Replaces `channel`, as the list has it, by what the camera says of it in full: what it can be, else what it is. A
/// camera that answers neither has said all in its list.
void AskAboutChannel(Conversation& camera, StreamingChannel& channel) {
  const std::string path = "/PSIA/Streaming/channels/" + PercentEncoded(channel.id, kUnreservedSigns);
  for (const char* end : {"/capabilities", ""}) {
    const Reading reading = camera.Get(path + end, {"StreamingChannel"});
    if (reading.outcome != Outcome::kOk) continue;
    StreamingChannel answer = ReadChannel(reading.document.Root());
    if (!answer.hasVideo) continue;
    answer.id = channel.id;
    KeepCurrent(answer, channel);
    channel = std::move(answer);
    return;
  }
}

Outcome AskDevice(Conversation& camera, CameraReport& report) {
  const Reading device = camera.Get("/PSIA/System/deviceInfo", {"DeviceInfo"});
  report.device = ReadDevice(device.document.Root());
  report.maker = ReadMaker(device.document.Root());
  report.model = ReadModelName(device.document.Root());
  return OfFirstQuestion(device.outcome);
}

Outcome AskChannels(Conversation& camera, std::vector<StreamingChannel>& channels) {
  const Reading list = camera.Get("/PSIA/Streaming/channels", {"StreamingChannelList"});
  if (list.outcome != Outcome::kOk) return list.outcome;
  channels = ReadChannels(list.document.Root());
  PutDefaultFirst(channels);
  return channels.empty() ? Outcome::kNoVideo : Outcome::kOk;
}

void AskAboutInputs(Conversation& camera, CameraReport& report) {
  const Reading inputs = camera.Get("/PSIA/System/IO/inputs", {"IOInputPortList"});
  if (inputs.outcome == Outcome::kOk) report.digitalInputs = CountInputs(inputs.document.Root());
}

void AskAboutMotion(Conversation& camera, const std::vector<StreamingChannel>& channels, CameraReport& report) {
  const Reading motion = camera.Get("/PSIA/Custom/MotionDetection", {"MotionDetectionList", "MotionDetection"});
  if (motion.outcome != Outcome::kOk) return;
  report.motionChannels = ReadMotionChannels(motion.document.Root(), channels, report.channel);
}

}  // namespace

Outcome Ask(const CameraAddress& address, const std::string& channel, CameraReport& report) {
  Conversation camera(address);
  CameraReport found;
  if (const Outcome outcome = AskDevice(camera, found); outcome != Outcome::kOk) return outcome;
  std::vector<StreamingChannel> channels;
  if (const Outcome outcome = AskChannels(camera, channels); outcome != Outcome::kOk) return outcome;
  StreamingChannel& chosen = Choose(channels, channel);
  camera.EndBy(HalfTime::End());  // all that follows may stay unanswered
  AskAboutChannel(camera, chosen);

  found.channel = chosen.id;
  found.audioChannels.emplace();
  for (const StreamingChannel& each : channels) {
    found.channels.push_back(each.id);
    if (each.hasAudio) found.audioChannels->push_back(each.id);
  }
  AskAboutInputs(camera, found);
  AskAboutMotion(camera, channels, found);
  if (camera.End() == Outcome::kLoginRefused) return camera.End();
  if (!FillIn(chosen, found)) return camera.HasEnded() ? camera.End() : Outcome::kNoVideo;
  report = std::move(found);
  return Outcome::kOk;
}

}  // namespace recorder::psia
