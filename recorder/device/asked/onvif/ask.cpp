#include "recorder/device/asked/onvif/ask.h"

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <set>
#include <utility>

#include "recorder/device/asked/onvif/answers.h"
#include "recorder/device/asked/onvif/motion.h"
#include "recorder/device/asked/onvif/profiles.h"
#include "recorder/device/asked/onvif/soap.h"
#include "recorder/device/asked/onvif/stream_questions.h"
#include "recorder/device/asked/onvif/uri.h"
#include "recorder/device/asked/onvif/video_report.h"
#include "recorder/device/asked/xml.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/cause_table.h"
#include "recorder/utility/log.h"

namespace recorder::onvif {
namespace {

/// The questions to one camera, in steps: twelve requests at most, and one for each further codec, beside those that
/// are sent again with a login. A step ends the questioning by another outcome than kOk.
class Questioning {
 public:
  Questioning(const CameraAddress& camera, const std::string& channel)
      : client_(camera), place_(PlaceOf(camera)), wantedChannel_(channel) {}

  Outcome Run() {
    const Outcome outcome = Take({&Questioning::AskClock, &Questioning::AskServices, &Questioning::AskProfiles,
                                  &Questioning::ChooseChannel, &Questioning::AskStream});
    if (outcome != Outcome::kOk) return outcome;
    client_.EndBy(HalfTime::End());  // a question that a camera never answers leaves time for what was asked for
    const Outcome more =
        Take({&Questioning::AskOptions, &Questioning::AskOtherStreams, &Questioning::AskSnapshot,
              &Questioning::AskInputs, &Questioning::AskAudio, &Questioning::AskMotion, &Questioning::AskDevice});
    return MayBeRefusedLogin(more) ? more : Outcome::kOk;
  }

  void LogNamespaces() const {
    if (!client_.ReadsByName()) return;
    LogFailure("The camera at " + place_ + " puts ONVIF's elements into other namespaces than the standard does, or " +
               "does not declare them: they were read by their names alone.");
  }

  CameraReport TakeReport() { return std::move(report_); }

 private:
  Outcome Take(std::initializer_list<Outcome (Questioning::*)()> steps) {
    for (const auto step : steps) {
      if (const Outcome outcome = (this->*step)(); outcome != Outcome::kOk) return outcome;
    }
    return Outcome::kOk;
  }

  /// How a step ends whose question may stay unanswered.
  static Outcome Optional(const Reply& reply) { return reply.isLast ? reply.outcome : Outcome::kOk; }

  /// Is this ONVIF at all, and what time is it there? No camera should want a login for that.
  Outcome AskClock() {
    const Reply reply = client_.AskClock();
    return reply.isLast || !reply.IsSoap() ? OfFirstQuestion(reply.outcome) : Outcome::kOk;
  }

  Outcome AskServices() {
    const Outcome outcome = onvif::AskServices(client_, services_, capabilities_);
    TakeProtocols();
    return outcome;
  }

  void TakeProtocols() {
    if (capabilities_) report_.rtspProtocols = capabilities_->rtspProtocols;
  }

  Outcome AskProfiles() { return onvif::AskProfiles(client_, services_, media_, profiles_); }

  /// A channel is a video source.
  Outcome ChooseChannel() {
    const std::vector<std::string> sources = SourcesOf(profiles_);
    for (std::size_t i = 0; i < sources.size(); ++i) report_.channels.push_back(std::to_string(i + 1));
    const bool isDefault = wantedChannel_.empty() || sources.size() == 1;
    report_.channel = isDefault ? report_.channels.front() : wantedChannel_;
    const auto channel = std::find(report_.channels.begin(), report_.channels.end(), report_.channel);
    if (channel == report_.channels.end()) return Outcome::kNoSuchStream;
    return ChooseProfile(sources[static_cast<std::size_t>(channel - report_.channels.begin())]);
  }

  Outcome ChooseProfile(const std::string& source) {
    std::set<std::string> encoders;
    for (const Profile& profile : profiles_) {
      if (profile.source != source || !profile.encoder) continue;
      if (encoders.empty()) profile_ = profile;
      encoders.insert(profile.encoder->token);
    }
    if (encoders.empty()) return Outcome::kNoVideo;
    report_.streamCount = static_cast<int>(encoders.size());
    report_.audioChannels = ChannelIf(profile_.hasAudio);
    if (profile_.hasAnalytics) report_.motionChannels = ChannelIf(profile_.detectsMotion);
    ChooseOtherProfiles();
    return Outcome::kOk;
  }

  /// The first profile of each codec that the chosen one does not have.
  void ChooseOtherProfiles() {
    std::set<std::string> codecs{profile_.encoder->codec};
    for (const Profile& profile : profiles_) {
      if (profile.source != profile_.source || !profile.encoder) continue;
      if (codecs.insert(profile.encoder->codec).second) otherProfiles_.push_back(profile);
    }
  }

  Reply AskEncoderOptions(const std::string& name, const std::string& encoder) {
    const std::string arguments = encoder.empty() ? "" : Element("ConfigurationToken", encoder);
    return AskMedia(client_, media_, name, arguments, profile_.token);
  }

  Outcome AskStream() {
    report_.media = {media_.path, media_.IsMedia2(), {{profile_.encoder->codec, profile_.token}}};
    return ReadStream(onvif::AskStream(client_, media_, profile_.token), report_.stream);
  }

  Outcome AskOptions() {
    const VideoEncoder& encoder = *profile_.encoder;
    const Reply reply = AskEncoderOptions("GetVideoEncoderConfigurationOptions", encoder.token);
    const VideoOptions options = ReadVideoOptions(reply.content, *media_.service);
    ReportVideo(encoder, options, report_);
    LogMissing(options);
    return Optional(reply);
  }

  /// A camera that names one address for all of its profiles has one stream.
  Outcome AskOtherStreams() {
    for (const Profile& profile : otherProfiles_) {
      const Reply reply = onvif::AskStream(client_, media_, profile.token);
      if (reply.isLast) return reply.outcome;
      ModelPath path;
      const bool isThere = ReadStream(reply, path) == Outcome::kOk;
      if (isThere && path != report_.stream) AddStream(profile, path);
    }
    return Outcome::kOk;
  }

  void AddStream(const Profile& profile, const ModelPath& path) {
    const std::string& codec = profile.encoder->codec;
    report_.media->profiles.emplace(codec, profile.token);
    report_.otherStreams.push_back({.codec = codec, .from = path});
    const bool isKnown = std::any_of(report_.codecs.begin(), report_.codecs.end(),
                                     [&](const ModelCodec& known) { return known.name == codec; });
    if (!isKnown) report_.codecs.push_back({codec, {"RTSP"}});
  }

  /// Such a camera is used by what it is set to now: whoever wonders why there is nothing to choose finds it here.
  void LogMissing(const VideoOptions& options) const {
    std::string missing;
    const auto add = [&missing](bool isMissing, const char* what) {
      if (isMissing) missing += (missing.empty() ? "" : ", ") + std::string(what);
    };
    add(options.resolutions.empty(), "sizes");
    add(options.frameRates.empty(), "frame rates");
    add(!options.quality, "qualities");
    if (missing.empty()) return;
    LogFailure("The camera at " + place_ + " does not tell over ONVIF, or not understandably, which of these can be " +
               "chosen: " + missing + ".");
  }

  Outcome AskSnapshot() {
    const Reply reply = AskMedia(client_, media_, "GetSnapshotUri", "", profile_.token);
    report_.snapshot = SnapshotPath(ReadUri(reply.content), services_.port);
    return Optional(reply);
  }

  Outcome AskInputs() {
    if (!services_.deviceIo.empty()) {
      const Reply reply = client_.Call(services_.deviceIo, kDeviceIo, "GetDigitalInputs");
      if (reply.outcome == Outcome::kOk) report_.digitalInputs = CountDigitalInputs(reply.content);
      if (reply.isLast || report_.digitalInputs) return Optional(reply);
    }
    if (!capabilities_) {
      const Reply reply = AskCapabilities(client_, capabilities_);
      TakeProtocols();
      if (reply.isLast) return reply.outcome;
    }
    report_.digitalInputs = capabilities_->digitalInputs;
    return Outcome::kOk;
  }

  Outcome AskAudio() {
    if (!profile_.hasAudio) return Outcome::kOk;
    const Reply reply = AskEncoderOptions("GetAudioEncoderConfigurationOptions", profile_.audioEncoder);
    if (reply.outcome == Outcome::kOk) report_.audioChannels = ChannelIf(OffersAudio(reply.content, *media_.service));
    return Optional(reply);
  }

  Outcome AskMotion() {
    if (profile_.detectsMotion || services_.events.empty()) return Outcome::kOk;
    const Reply reply = client_.Call(services_.events, kEvents, "GetEventProperties");
    if (reply.outcome == Outcome::kOk) report_.motionChannels = ChannelIf(HasMotionTopic(reply.content));
    return Optional(reply);
  }

  Outcome AskDevice() {
    const Reply reply = client_.Call(kDevicePath, kDevice, "GetDeviceInformation");
    report_.device = ReadDevice(reply.content);
    const DeviceFacts facts = ReadDeviceFacts(reply.content);
    report_.maker = facts.maker;
    report_.model = facts.model;
    report_.serial = facts.serial;
    return Optional(reply);
  }

  /// The channel that is asked about, if it has what a list is about.
  std::vector<std::string> ChannelIf(bool has) const {
    return has ? std::vector<std::string>{report_.channel} : std::vector<std::string>{};
  }

  SoapClient client_;
  const std::string place_;
  const std::string wantedChannel_;
  ServicePaths services_;
  std::optional<Capabilities> capabilities_;  ///< once they were asked for
  MediaService media_;                        ///< that has the profiles
  std::vector<Profile> profiles_;
  Profile profile_;                     ///< that the report is about; has an encoder
  std::vector<Profile> otherProfiles_;  ///< of the same source, with encoders for other codecs
  CameraReport report_;
};

}  // namespace

Outcome Ask(const CameraAddress& address, const std::string& channel, CameraReport& report) {
  Questioning questioning(address, channel);
  const Outcome outcome = questioning.Run();
  questioning.LogNamespaces();
  if (outcome == Outcome::kOk) report = questioning.TakeReport();
  return outcome;
}

}  // namespace recorder::onvif
