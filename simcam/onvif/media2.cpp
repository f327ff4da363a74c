#include <algorithm>

#include "simcam/onvif/operations.h"
#include "simcam/onvif/profiles.h"
#include "simcam/xml_text.h"

namespace simcam {
namespace {

/// Which configurations a profile is to be listed with: none without a wish.
bool Wanted(const SoapRequest& request, std::string_view type) {
  const auto types = request.All("Type");
  return std::any_of(types.begin(), types.end(),
                     [type](const std::string& wish) { return wish == "All" || wish == type; });
}

std::string EncoderXml(const OnvifProfile& profile) {
  const StreamConfig& stream = *profile.stream;
  const std::string settings = stream.codec->isAllKeys
                                   ? ""
                                   : Fill(" GovLength=\"{gop}\" Profile=\"{profile}\"",
                                          {{"gop", stream.gop}, {"profile", stream.codec->media2Profile}});
  return Fill(
      "<tr2:VideoEncoder token=\"VideoEncoder_{number}\"{settings}>{entity}<tt:Encoding>{encoding}</tt:Encoding>"
      "{resolution}<tt:RateControl><tt:FrameRateLimit>{fps}</tt:FrameRateLimit>"
      "<tt:BitrateLimit>{bitrate}</tt:BitrateLimit></tt:RateControl><tt:Quality>{quality}</tt:Quality>"
      "</tr2:VideoEncoder>",
      {{"number", profile.number},
       {"settings", settings},
       {"entity", EntityXml("Video encoder " + std::to_string(profile.number), 1)},
       {"encoding", stream.codec->media2},
       {"resolution", ResolutionXml("tt:Resolution", stream.size)},
       {"fps", stream.fps},
       {"bitrate", stream.bitrate},
       {"quality", kUsualQuality}});
}

std::string AudioEncoderXml(const OnvifProfile& profile) {
  return Fill(
      "<tr2:AudioEncoder token=\"AudioEncoder_{channel}\">{entity}<tt:Encoding>PCMA</tt:Encoding>"
      "<tt:Bitrate>64</tt:Bitrate><tt:SampleRate>8</tt:SampleRate></tr2:AudioEncoder>",
      {{"channel", profile.channel}, {"entity", EntityXml("Audio encoder " + std::to_string(profile.channel), 1)}});
}

std::string ConfigurationXml(const char* element, const char* token, const OnvifProfile& profile,
                             const std::string& content) {
  return Fill("<tr2:{element} token=\"{token}_{channel}\">{content}</tr2:{element}>",
              {{"element", element}, {"token", token}, {"channel", profile.channel}, {"content", content}});
}

std::string ConfigurationsXml(const OnvifCamera& camera, const SoapRequest& request, const OnvifProfile& profile) {
  std::string xml;
  const bool audio = camera.onvif.audio;
  if (Wanted(request, "VideoSource")) {
    xml += ConfigurationXml("VideoSource", "VideoSourceConfig", profile, VideoSourceXml(camera, profile));
  }
  if (audio && Wanted(request, "AudioSource")) {
    xml += ConfigurationXml("AudioSource", "AudioSourceConfig", profile, AudioSourceXml(camera, profile));
  }
  if (Wanted(request, "VideoEncoder")) xml += EncoderXml(profile);
  if (audio && Wanted(request, "AudioEncoder")) xml += AudioEncoderXml(profile);
  if (camera.onvif.motion == Motion::kAnalytics && Wanted(request, "Analytics")) {
    xml += ConfigurationXml("Analytics", "Analytics", profile, AnalyticsXml(camera));
  }
  return xml.empty() ? "" : "<tr2:Configurations>" + xml + "</tr2:Configurations>";
}

std::string OptionsOf(const std::vector<OnvifProfile>& profiles, const Codec& codec) {
  const int fastest = FastestOf(profiles, codec);
  if (fastest == 0) return {};
  int bitrate = 0;
  for (const OnvifProfile& profile : profiles) bitrate = std::max(bitrate, profile.stream->bitrate);
  const std::string settings = codec.isAllKeys ? ""
                                               : Fill(" GovLengthRange=\"1 {gop}\" ProfilesSupported=\"{profile}\"",
                                                      {{"gop", kMostGop}, {"profile", codec.media2Profile}});
  return Fill(
      "<tr2:Options{settings} FrameRatesSupported=\"{rates}\"><tt:Encoding>{encoding}</tt:Encoding>{quality}"
      "{resolutions}{bitrate}</tr2:Options>",
      {{"settings", settings},
       {"rates", RatesUpTo(fastest, 1, " ")},
       {"encoding", codec.media2},
       {"quality", RangeXml("tt:QualityRange", kLeastQuality, kMostQuality)},
       {"resolutions", ResolutionsXml(profiles, codec)},
       {"bitrate", RangeXml("tt:BitrateRange", 50, bitrate)}});
}

}  // namespace

std::string media2::GetProfiles(const OnvifCamera& camera, const SoapRequest& request) {
  std::string profiles;
  for (const OnvifProfile& profile : ProfilesOf(camera, kMedia2)) {
    profiles += Fill(
        "<tr2:Profiles token=\"Profile_{number}\" fixed=\"true\"><tr2:Name>Profile {number}</tr2:Name>"
        "{configurations}</tr2:Profiles>",
        {{"number", profile.number}, {"configurations", ConfigurationsXml(camera, request, profile)}});
  }
  return profiles;
}

std::string media2::GetVideoEncoderConfigurationOptions(const OnvifCamera& camera, const SoapRequest& request) {
  const auto profiles = ProfilesAskedFor(camera, request, kMedia2);
  std::string options;
  const auto codecs = Codecs();
  std::for_each(codecs.rbegin(), codecs.rend(), [&](const Codec& codec) { options += OptionsOf(profiles, codec); });
  return options;
}

std::string media2::GetAudioEncoderConfigurationOptions(const OnvifCamera& camera, const SoapRequest&) {
  if (!camera.onvif.audio) throw NotSupported("there is no audio here");
  return "<tr2:Options><tt:Encoding>PCMA</tt:Encoding>"
         "<tt:BitrateList><tt:Items>64</tt:Items></tt:BitrateList>"
         "<tt:SampleRateList><tt:Items>8</tt:Items></tt:SampleRateList></tr2:Options>";
}

std::string media2::GetStreamUri(const OnvifCamera& camera, const SoapRequest& request) {
  request.Need("Protocol");
  return "<tr2:Uri>" + StreamAddressXml(camera, ProfileNamed(camera, request)) + "</tr2:Uri>";
}

std::string media2::GetSnapshotUri(const OnvifCamera& camera, const SoapRequest& request) {
  return "<tr2:Uri>" + SnapshotAddressXml(camera, ProfileNamed(camera, request)) + "</tr2:Uri>";
}

std::string media2::SetSynchronizationPoint(const OnvifCamera& camera, const SoapRequest& request) {
  return Synchronize(camera, request);
}

}  // namespace simcam
