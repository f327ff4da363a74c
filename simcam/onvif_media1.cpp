#include "simcam/onvif_answers.h"
#include "simcam/onvif_profiles.h"
#include "simcam/xml_text.h"

namespace simcam {
namespace {

constexpr const char* kMulticast =
    "<tt:Multicast><tt:Address><tt:Type>IPv4</tt:Type><tt:IPv4Address>0.0.0.0</tt:IPv4Address></tt:Address>"
    "<tt:Port>0</tt:Port><tt:TTL>0</tt:TTL><tt:AutoStart>false</tt:AutoStart></tt:Multicast>"
    "<tt:SessionTimeout>PT60S</tt:SessionTimeout>";

/// A codec as media 1 spells it; null for what it does not know.
const char* EncodingName(Codec codec) {
  switch (codec) {
    case Codec::kH264:
      return "H264";
    case Codec::kMpeg4:
      return "MPEG4";
    case Codec::kJpeg:
      return "JPEG";
    case Codec::kH265:
      break;
  }
  return nullptr;
}

std::string CodecSettings(const StreamConfig& stream) {
  const char* settings = "";
  if (stream.codec == Codec::kH264) {
    settings = "<tt:H264><tt:GovLength>{gop}</tt:GovLength><tt:H264Profile>Main</tt:H264Profile></tt:H264>";
  } else if (stream.codec == Codec::kMpeg4) {
    settings = "<tt:MPEG4><tt:GovLength>{gop}</tt:GovLength><tt:Mpeg4Profile>SP</tt:Mpeg4Profile></tt:MPEG4>";
  }
  return Fill(settings, {{"gop", stream.gop}});
}

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
       {"encoding", EncodingName(stream.codec)},
       {"resolution", ResolutionXml("tt:Resolution", stream.size)},
       {"quality", kUsualQuality},
       {"fps", stream.fps},
       {"bitrate", stream.bitrate},
       {"settings", CodecSettings(stream)},
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

std::string GetProfiles(const OnvifCamera& camera, const SoapRequest&) {
  std::string profiles;
  for (const OnvifProfile& profile : ProfilesOf(camera, kMedia1Service)) profiles += ProfileXml(camera, profile);
  return "<trt:GetProfilesResponse>" + profiles + "</trt:GetProfilesResponse>";
}

/// What a codec can be set to; empty if these profiles do not have it.
std::string CodecOptions(const std::vector<OnvifProfile>& profiles, Codec codec, const char* profileNames) {
  const int fastest = FastestOf(profiles, codec);
  if (fastest == 0) return {};
  return Fill("<tt:{codec}>{resolutions}{gop}{fps}{interval}{profiles}</tt:{codec}>",
              {{"codec", EncodingName(codec)},
               {"resolutions", ResolutionsXml(profiles, codec)},
               {"gop", codec == Codec::kJpeg ? "" : RangeXml("tt:GovLengthRange", 1, kMostGop)},
               {"fps", RangeXml("tt:FrameRateRange", 1, fastest)},
               {"interval", RangeXml("tt:EncodingIntervalRange", 1, 1)},
               {"profiles", profileNames}});
}

std::string GetVideoEncoderConfigurationOptions(const OnvifCamera& camera, const SoapRequest& request) {
  const auto profiles = ProfilesAskedFor(camera, request, kMedia1Service);
  return "<trt:GetVideoEncoderConfigurationOptionsResponse><trt:Options>" +
         RangeXml("tt:QualityRange", kLeastQuality, kMostQuality) + CodecOptions(profiles, Codec::kJpeg, "") +
         CodecOptions(profiles, Codec::kMpeg4, "<tt:Mpeg4ProfilesSupported>SP</tt:Mpeg4ProfilesSupported>") +
         CodecOptions(profiles, Codec::kH264, "<tt:H264ProfilesSupported>Main</tt:H264ProfilesSupported>") +
         "</trt:Options></trt:GetVideoEncoderConfigurationOptionsResponse>";
}

std::string GetAudioEncoderConfigurationOptions(const OnvifCamera& camera, const SoapRequest&) {
  const std::string options =
      "<tt:Options><tt:Encoding>G711</tt:Encoding><tt:BitrateList><tt:Items>64</tt:Items></tt:BitrateList>"
      "<tt:SampleRateList><tt:Items>8</tt:Items></tt:SampleRateList></tt:Options>";
  return "<trt:GetAudioEncoderConfigurationOptionsResponse><trt:Options>" + (camera.onvif.audio ? options : "") +
         "</trt:Options></trt:GetAudioEncoderConfigurationOptionsResponse>";
}

std::string MediaUri(const char* response, const std::string& address) {
  return Fill(
      "<trt:{response}><trt:MediaUri><tt:Uri>{address}</tt:Uri>"
      "<tt:InvalidAfterConnect>false</tt:InvalidAfterConnect><tt:InvalidAfterReboot>false</tt:InvalidAfterReboot>"
      "<tt:Timeout>PT0S</tt:Timeout></trt:MediaUri></trt:{response}>",
      {{"response", response}, {"address", address}});
}

std::string GetStreamUri(const OnvifCamera& camera, const SoapRequest& request) {
  request.Need("Stream", kTt);
  request.Need("Protocol", kTt);
  return MediaUri("GetStreamUriResponse", StreamAddressXml(camera, ProfileNamed(camera, request)));
}

std::string GetSnapshotUri(const OnvifCamera& camera, const SoapRequest& request) {
  return MediaUri("GetSnapshotUriResponse", SnapshotAddressXml(camera, ProfileNamed(camera, request)));
}

}  // namespace

const std::vector<OnvifOperation>& Media1Operations() {
  static const std::vector<OnvifOperation> operations = {
      {kMedia1Service, "GetProfiles", GetProfiles},
      {kMedia1Service, "GetVideoEncoderConfigurationOptions", GetVideoEncoderConfigurationOptions},
      {kMedia1Service, "GetAudioEncoderConfigurationOptions", GetAudioEncoderConfigurationOptions},
      {kMedia1Service, "GetStreamUri", GetStreamUri},
      {kMedia1Service, "GetSnapshotUri", GetSnapshotUri}};
  return operations;
}

}  // namespace simcam
