#include "simcam/onvif/operations.h"
#include "simcam/onvif/profiles.h"
#include "simcam/xml_text.h"

namespace simcam {
namespace {

constexpr const char* kMulticast =
    "<tt:Multicast><tt:Address><tt:Type>IPv4</tt:Type><tt:IPv4Address>0.0.0.0</tt:IPv4Address></tt:Address>"
    "<tt:Port>0</tt:Port><tt:TTL>0</tt:TTL><tt:AutoStart>false</tt:AutoStart></tt:Multicast>"
    "<tt:SessionTimeout>PT60S</tt:SessionTimeout>";

std::string VideoEncoderXml(const OnvifProfile& profile) {
  const StreamConfig& stream = *profile.stream;
  return Fill(
      "<tt:VideoEncoderConfiguration token=\"VideoEncoder_{number}\">{entity}<tt:Encoding>{encoding}</tt:Encoding>"
      "{resolution}<tt:Quality>{quality}</tt:Quality><tt:RateControl>"
      "<tt:FrameRateLimit>{fps}</tt:FrameRateLimit><tt:EncodingInterval>1</tt:EncodingInterval>"
      "<tt:BitrateLimit>{bitrate}</tt:BitrateLimit></tt:RateControl>{settings}{multicast}"
      "</tt:VideoEncoderConfiguration>",
      {{"number", profile.number},
       {"entity", EntityXml("Video encoder " + std::to_string(profile.number), 1)},
       {"encoding", stream.codec->media1->name},
       {"resolution", ResolutionXml("tt:Resolution", stream.size)},
       {"quality", kUsualQuality},
       {"fps", stream.fps},
       {"bitrate", stream.bitrate},
       {"settings", Fill(stream.codec->media1->settings, {{"gop", stream.gop}})},
       {"multicast", kMulticast}});
}

std::string AudioXml(const char* content, const OnvifProfile& profile, const std::string& source) {
  return Fill(content, {{"channel", profile.channel},
                        {"source", source},
                        {"entity", EntityXml("Audio encoder " + std::to_string(profile.channel), 1)},
                        {"multicast", kMulticast}});
}

std::string ProfileXml(const OnvifCamera& camera, const OnvifProfile& profile) {
  std::string audioSource;
  std::string audioEncoder;
  if (camera.onvif.audio) {
    audioSource = AudioXml(
        "<tt:AudioSourceConfiguration token=\"AudioSourceConfig_{channel}\">{source}</tt:AudioSourceConfiguration>",
        profile, AudioSourceXml(camera, profile));
    audioEncoder = AudioXml(
        "<tt:AudioEncoderConfiguration token=\"AudioEncoder_{channel}\">{entity}<tt:Encoding>G711</tt:Encoding>"
        "<tt:Bitrate>64</tt:Bitrate><tt:SampleRate>8</tt:SampleRate>{multicast}</tt:AudioEncoderConfiguration>",
        profile, {});
  }
  std::string analytics;
  if (camera.onvif.motion == Motion::kAnalytics) {
    analytics = Fill(
        "<tt:VideoAnalyticsConfiguration token=\"Analytics_{channel}\">{analytics}</tt:VideoAnalyticsConfiguration>",
        {{"channel", profile.channel}, {"analytics", AnalyticsXml(camera)}});
  }
  return Fill(
      "<trt:Profiles token=\"Profile_{number}\" fixed=\"true\"><tt:Name>Profile {number}</tt:Name>"
      "<tt:VideoSourceConfiguration token=\"VideoSourceConfig_{channel}\">{videoSource}"
      "</tt:VideoSourceConfiguration>{audioSource}{videoEncoder}{audioEncoder}{analytics}</trt:Profiles>",
      {{"number", profile.number},
       {"channel", profile.channel},
       {"videoSource", VideoSourceXml(camera, profile)},
       {"audioSource", audioSource},
       {"videoEncoder", VideoEncoderXml(profile)},
       {"audioEncoder", audioEncoder},
       {"analytics", analytics}});
}

/// What a codec can be set to; empty if these profiles do not have it.
std::string CodecOptions(const std::vector<OnvifProfile>& profiles, const Codec& codec) {
  const int fastest = FastestOf(profiles, codec);
  if (fastest == 0) return {};
  return Fill("<tt:{codec}>{resolutions}{gop}{fps}{interval}{profiles}</tt:{codec}>",
              {{"codec", codec.media1->name},
               {"resolutions", ResolutionsXml(profiles, codec)},
               {"gop", codec.isAllKeys ? "" : RangeXml("tt:GovLengthRange", 1, kMostGop)},
               {"fps", RangeXml("tt:FrameRateRange", 1, fastest)},
               {"interval", RangeXml("tt:EncodingIntervalRange", 1, 1)},
               {"profiles", codec.media1->options}});
}

std::string MediaUri(const std::string& address) {
  return "<trt:MediaUri><tt:Uri>" + address +
         "</tt:Uri><tt:InvalidAfterConnect>false</tt:InvalidAfterConnect>"
         "<tt:InvalidAfterReboot>false</tt:InvalidAfterReboot><tt:Timeout>PT0S</tt:Timeout></trt:MediaUri>";
}

}  // namespace

std::string media1::GetProfiles(const OnvifCamera& camera, const SoapRequest&) {
  std::string profiles;
  for (const OnvifProfile& profile : ProfilesOf(camera, kMedia1)) profiles += ProfileXml(camera, profile);
  return profiles;
}

std::string media1::GetVideoEncoderConfigurationOptions(const OnvifCamera& camera, const SoapRequest& request) {
  const auto profiles = ProfilesAskedFor(camera, request, kMedia1);
  std::string options = RangeXml("tt:QualityRange", kLeastQuality, kMostQuality);
  for (const Codec& codec : Codecs()) options += CodecOptions(profiles, codec);
  return "<trt:Options>" + options + "</trt:Options>";
}

std::string media1::GetAudioEncoderConfigurationOptions(const OnvifCamera& camera, const SoapRequest&) {
  const std::string options =
      "<tt:Options><tt:Encoding>G711</tt:Encoding><tt:BitrateList><tt:Items>64</tt:Items></tt:BitrateList>"
      "<tt:SampleRateList><tt:Items>8</tt:Items></tt:SampleRateList></tt:Options>";
  return "<trt:Options>" + (camera.onvif.audio ? options : "") + "</trt:Options>";
}

std::string media1::GetStreamUri(const OnvifCamera& camera, const SoapRequest& request) {
  request.Need("Stream", kTt);
  request.Need("Protocol", kTt);
  return MediaUri(StreamAddressXml(camera, ProfileNamed(camera, request)));
}

std::string media1::GetSnapshotUri(const OnvifCamera& camera, const SoapRequest& request) {
  return MediaUri(SnapshotAddressXml(camera, ProfileNamed(camera, request)));
}

std::string media1::SetSynchronizationPoint(const OnvifCamera& camera, const SoapRequest& request) {
  return Synchronize(camera, request);
}

}  // namespace simcam
