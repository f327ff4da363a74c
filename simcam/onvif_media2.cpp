#include <algorithm>

#include "simcam/onvif_answers.h"
#include "simcam/onvif_profiles.h"
#include "simcam/xml_text.h"

namespace simcam {
namespace {

/// A codec as media 2 spells it: mostly as a media subtype, but MPEG-4 as it was once misspelt in the standard.
const char* EncodingName(Codec codec) {
  switch (codec) {
    case Codec::kH264:
      return "H264";
    case Codec::kH265:
      return "H265";
    case Codec::kMpeg4:
      return "MPV4-ES";
    case Codec::kJpeg:
      break;
  }
  return "JPEG";
}

const char* ProfileName(Codec codec) { return codec == Codec::kMpeg4 ? "Simple" : "Main"; }

/// Which configurations a profile is to be listed with: none without a wish.
bool Wanted(const SoapRequest& request, std::string_view type) {
  const auto types = request.All("Type");
  return std::any_of(types.begin(), types.end(),
                     [type](const std::string& wish) { return wish == "All" || wish == type; });
}

std::string VideoEncoderXml(const OnvifProfile& profile) {
  const StreamConfig& stream = *profile.stream;
  const std::string settings = stream.codec == Codec::kJpeg
                                   ? ""
                                   : Fill(" GovLength=\"{gop}\" Profile=\"{profile}\"",
                                          {{"gop", stream.gop}, {"profile", ProfileName(stream.codec)}});
  return Fill(
      "<tr2:VideoEncoder token=\"VideoEncoder_{number}\"{settings}>{entity}<tt:Encoding>{encoding}</tt:Encoding>"
      "{resolution}<tt:RateControl><tt:FrameRateLimit>{fps}</tt:FrameRateLimit>"
      "<tt:BitrateLimit>{bitrate}</tt:BitrateLimit></tt:RateControl><tt:Quality>{quality}</tt:Quality>"
      "</tr2:VideoEncoder>",
      {{"number", profile.number},
       {"settings", settings},
       {"entity", EntityXml("Video encoder " + std::to_string(profile.number), 1)},
       {"encoding", EncodingName(stream.codec)},
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
  if (Wanted(request, "VideoEncoder")) xml += VideoEncoderXml(profile);
  if (audio && Wanted(request, "AudioEncoder")) xml += AudioEncoderXml(profile);
  if (camera.onvif.motion == Motion::kAnalytics && Wanted(request, "Analytics")) {
    xml += ConfigurationXml("Analytics", "Analytics", profile, AnalyticsXml(camera));
  }
  return xml.empty() ? "" : "<tr2:Configurations>" + xml + "</tr2:Configurations>";
}

std::string GetProfiles(const OnvifCamera& camera, const SoapRequest& request) {
  std::string profiles;
  for (const OnvifProfile& profile : ProfilesOf(camera, kMedia2Service)) {
    profiles += Fill(
        "<tr2:Profiles token=\"Profile_{number}\" fixed=\"true\"><tr2:Name>Profile {number}</tr2:Name>"
        "{configurations}</tr2:Profiles>",
        {{"number", profile.number}, {"configurations", ConfigurationsXml(camera, request, profile)}});
  }
  return "<tr2:GetProfilesResponse>" + profiles + "</tr2:GetProfilesResponse>";
}

/// Usual rates up to the fastest, the highest first.
std::string FrameRates(int fastest) {
  std::string rates = std::to_string(fastest);
  for (const int rate : {30, 25, 20, 15, 10, 5, 1}) {
    if (rate < fastest) rates += " " + std::to_string(rate);
  }
  return rates;
}

std::string CodecOptions(const std::vector<OnvifProfile>& profiles, Codec codec) {
  const int fastest = FastestOf(profiles, codec);
  if (fastest == 0) return {};
  int bitrate = 0;
  for (const OnvifProfile& profile : profiles) bitrate = std::max(bitrate, profile.stream->bitrate);
  const std::string settings = codec == Codec::kJpeg
                                   ? ""
                                   : Fill(" GovLengthRange=\"1 {gop}\" ProfilesSupported=\"{profile}\"",
                                          {{"gop", kMostGop}, {"profile", ProfileName(codec)}});
  return Fill(
      "<tr2:Options{settings} FrameRatesSupported=\"{rates}\"><tt:Encoding>{encoding}</tt:Encoding>{quality}"
      "{resolutions}{bitrate}</tr2:Options>",
      {{"settings", settings},
       {"rates", FrameRates(fastest)},
       {"encoding", EncodingName(codec)},
       {"quality", RangeXml("tt:QualityRange", kLeastQuality, kMostQuality)},
       {"resolutions", ResolutionsXml(profiles, codec)},
       {"bitrate", RangeXml("tt:BitrateRange", 50, bitrate)}});
}

std::string GetVideoEncoderConfigurationOptions(const OnvifCamera& camera, const SoapRequest& request) {
  const auto profiles = ProfilesAskedFor(camera, request, kMedia2Service);
  std::string options;
  for (const Codec codec : {Codec::kH265, Codec::kH264, Codec::kMpeg4, Codec::kJpeg}) {
    options += CodecOptions(profiles, codec);
  }
  return "<tr2:GetVideoEncoderConfigurationOptionsResponse>" + options +
         "</tr2:GetVideoEncoderConfigurationOptionsResponse>";
}

std::string GetAudioEncoderConfigurationOptions(const OnvifCamera& camera, const SoapRequest&) {
  if (!camera.onvif.audio) throw SoapFault(500, "env:Receiver", "ter:ActionNotSupported", "there is no audio here");
  return "<tr2:GetAudioEncoderConfigurationOptionsResponse><tr2:Options><tt:Encoding>PCMA</tt:Encoding>"
         "<tt:BitrateList><tt:Items>64</tt:Items></tt:BitrateList>"
         "<tt:SampleRateList><tt:Items>8</tt:Items></tt:SampleRateList></tr2:Options>"
         "</tr2:GetAudioEncoderConfigurationOptionsResponse>";
}

std::string Uri(const char* response, const std::string& address) {
  return Fill("<tr2:{response}><tr2:Uri>{address}</tr2:Uri></tr2:{response}>",
              {{"response", response}, {"address", address}});
}

std::string GetStreamUri(const OnvifCamera& camera, const SoapRequest& request) {
  request.Need("Protocol");
  return Uri("GetStreamUriResponse", StreamAddressXml(camera, ProfileNamed(camera, request)));
}

std::string GetSnapshotUri(const OnvifCamera& camera, const SoapRequest& request) {
  return Uri("GetSnapshotUriResponse", SnapshotAddressXml(camera, ProfileNamed(camera, request)));
}

}  // namespace

const std::vector<OnvifOperation>& Media2Operations() {
  static const std::vector<OnvifOperation> operations = {
      {kMedia2Service, "GetProfiles", GetProfiles},
      {kMedia2Service, "GetVideoEncoderConfigurationOptions", GetVideoEncoderConfigurationOptions},
      {kMedia2Service, "GetAudioEncoderConfigurationOptions", GetAudioEncoderConfigurationOptions},
      {kMedia2Service, "GetStreamUri", GetStreamUri},
      {kMedia2Service, "GetSnapshotUri", GetSnapshotUri}};
  return operations;
}

}  // namespace simcam
