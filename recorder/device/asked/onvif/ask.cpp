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
#include "recorder/device/asked/onvif/uri.h"
#include "recorder/device/asked/onvif/video_report.h"
#include "recorder/device/asked/xml.h"
#include "recorder/net/camera_url.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/log.h"

namespace recorder::onvif {
namespace {

/// The video sources of `profiles`, in the order in which they are named first.
std::vector<std::string> SourcesOf(const std::vector<Profile>& profiles) {
  std::vector<std::string> sources;
  for (const Profile& profile : profiles) {
    if (std::find(sources.begin(), sources.end(), profile.source) == sources.end()) sources.push_back(profile.source);
  }
  return sources;
}

/// True for a failure after which the camera's other media service may still answer.
bool IsAboutOneService(Outcome outcome) {
  return outcome == Outcome::kNoVideo || outcome == Outcome::kNotUnderstood || outcome == Outcome::kNoSuchStream ||
         outcome == Outcome::kNotThisProtocol;
}

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
    const bool isLoginWrong = more == Outcome::kLoginRefused || more == Outcome::kClockUnknown;
    return isLoginWrong ? more : Outcome::kOk;
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
    const Reply reply = client_.Call(kDevicePath, kDevice, "GetServices", Element("IncludeCapability", "false"));
    if (reply.isLast || reply.outcome == Outcome::kBusy) return reply.outcome;
    services_ = ReadServices(reply.content);
    if (HasMedia()) return Outcome::kOk;

    const Reply older = AskCapabilities();
    if (older.outcome != Outcome::kOk) return older.outcome;
    services_ = capabilities_->services;
    return HasMedia() ? Outcome::kOk : Outcome::kNoVideo;
  }

  bool HasMedia() const { return !services_.media1.empty() || !services_.media2.empty(); }

  Reply AskCapabilities() {
    Reply reply = client_.Call(kDevicePath, kDevice, "GetCapabilities", Element("Category", "All"));
    capabilities_ = ReadCapabilities(reply.content);
    report_.rtspProtocols = capabilities_->rtspProtocols;
    return reply;
  }

  /// Media 2 knows more codecs, but not every camera that names it has it.
  Outcome AskProfiles() {
    if (services_.media2.empty()) return AskProfilesOf(kMedia1, services_.media1);
    const Outcome outcome = AskProfilesOf(kMedia2, services_.media2);
    const bool isOneLeft = IsAboutOneService(outcome) && !services_.media1.empty();
    return isOneLeft ? AskProfilesOf(kMedia1, services_.media1) : outcome;
  }

  Outcome AskProfilesOf(const Service& service, const std::string& path) {
    media_ = &service;
    mediaPath_ = path;
    const Reply reply = client_.Call(path, service, "GetProfiles", IsMedia2() ? Element("Type", "All") : "");
    if (reply.outcome != Outcome::kOk) return reply.outcome;
    profiles_ = ReadProfiles(reply.content, service);
    const bool hasVideo = std::any_of(profiles_.begin(), profiles_.end(),
                                      [](const Profile& profile) { return profile.encoder.has_value(); });
    return hasVideo ? Outcome::kOk : Outcome::kNoVideo;
  }

  bool IsMedia2() const { return media_ == &kMedia2; }

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

  /// Asks the media service for something of a profile.
  Reply AskMedia(const std::string& name, const std::string& arguments, const Profile& profile) {
    return client_.Call(mediaPath_, *media_, name, arguments + Element("ProfileToken", profile.token));
  }

  Reply AskEncoderOptions(const std::string& name, const std::string& encoder) {
    return AskMedia(name, encoder.empty() ? "" : Element("ConfigurationToken", encoder), profile_);
  }

  Reply AskStreamOf(const Profile& profile) {
    constexpr char kRtspUnicast[] =
        R"(<StreamSetup><Stream xmlns="http://www.onvif.org/ver10/schema">RTP-Unicast</Stream>)"
        R"(<Transport xmlns="http://www.onvif.org/ver10/schema"><Protocol>RTSP</Protocol></Transport></StreamSetup>)";
    return AskMedia("GetStreamUri", IsMedia2() ? Element("Protocol", "RTSP") : kRtspUnicast, profile);
  }

  Outcome AskStream() {
    report_.media = {mediaPath_, IsMedia2(), {{profile_.encoder->codec, profile_.token}}};
    return ReadStream(AskStreamOf(profile_), report_.stream);
  }

  static Outcome ReadStream(const Reply& reply, ModelPath& stream) {
    if (reply.isFault && !reply.isLoginWanted) return Outcome::kNoVideo;
    if (reply.outcome != Outcome::kOk) return reply.outcome;
    const auto url = ParseCameraUrl(ReadUri(reply.content));
    const bool isTls = url && url->scheme == "rtsps";
    if (!url || (!isTls && url->scheme != "rtsp")) return Outcome::kNoVideo;
    stream = {url->path, url->port, isTls};
    return Outcome::kOk;
  }

  Outcome AskOptions() {
    const VideoEncoder& encoder = *profile_.encoder;
    const Reply reply = AskEncoderOptions("GetVideoEncoderConfigurationOptions", encoder.token);
    const VideoOptions options = ReadVideoOptions(reply.content, *media_);
    ReportVideo(encoder, options, report_);
    LogMissing(options);
    return Optional(reply);
  }

  /// A camera that names one address for all of its profiles has one stream.
  Outcome AskOtherStreams() {
    for (const Profile& profile : otherProfiles_) {
      const Reply reply = AskStreamOf(profile);
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
    const Reply reply = AskMedia("GetSnapshotUri", "", profile_);
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
      const Reply reply = AskCapabilities();
      if (reply.isLast) return reply.outcome;
    }
    report_.digitalInputs = capabilities_->digitalInputs;
    return Outcome::kOk;
  }

  Outcome AskAudio() {
    if (!profile_.hasAudio) return Outcome::kOk;
    const Reply reply = AskEncoderOptions("GetAudioEncoderConfigurationOptions", profile_.audioEncoder);
    if (reply.outcome == Outcome::kOk) report_.audioChannels = ChannelIf(OffersAudio(reply.content, *media_));
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
    report_.maker = ReadMaker(reply.content);
    report_.model = ReadModelName(reply.content);
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
  const Service* media_ = nullptr;            ///< the media service that has the profiles
  std::string mediaPath_;
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
