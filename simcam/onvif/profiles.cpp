#include "simcam/onvif/profiles.h"

#include <algorithm>

#include "simcam/xml_text.h"

namespace simcam {

int StreamsEach(const OnvifCamera& camera) {
  return static_cast<int>(camera.config.streams.size()) / camera.onvif.channels;
}

std::vector<OnvifProfile> ProfilesOf(const OnvifCamera& camera, OnvifServiceIndex media) {
  std::vector<OnvifProfile> profiles;
  int number = 0;
  for (const StreamConfig& stream : camera.config.streams) {
    const int channel = number++ / StreamsEach(camera) + 1;
    if (media == kMedia1 && !stream.codec->media1) continue;
    profiles.push_back({&stream, number, channel});
  }
  return profiles;
}

OnvifProfile ProfileNamed(const OnvifCamera& camera, const SoapRequest& request) {
  const std::string token = request.Need("ProfileToken");
  for (const OnvifProfile& profile : ProfilesOf(camera, kMedia2)) {
    if (token == "Profile_" + std::to_string(profile.number)) return profile;
  }
  throw InvalidRequest("ter:InvalidArgVal ter:NoProfile", "there is no such profile");
}

std::vector<OnvifProfile> ProfilesAskedFor(const OnvifCamera& camera, const SoapRequest& request,
                                           OnvifServiceIndex media) {
  auto all = ProfilesOf(camera, media);
  std::vector<std::string> tokens = request.All("ProfileToken");
  for (const std::string& token : request.All("ConfigurationToken")) tokens.push_back(token);
  if (tokens.empty()) return all;
  for (const OnvifProfile& named : ProfilesOf(camera, kMedia2)) {
    const std::string number = std::to_string(named.number);
    if (tokens[0] != "Profile_" + number && tokens[0] != "VideoEncoder_" + number) continue;
    std::vector<OnvifProfile> profiles;
    std::copy_if(all.begin(), all.end(), std::back_inserter(profiles),
                 [&](const OnvifProfile& profile) { return profile.channel == named.channel; });
    return profiles;
  }
  throw InvalidRequest("ter:InvalidArgVal ter:NoConfig", "there is no such configuration");
}

std::string Synchronize(const OnvifCamera& camera, const SoapRequest& request) {
  camera.syncPoints.Ask(ProfileNamed(camera, request).stream->path);
  return {};
}

std::string EntityXml(const std::string& name, int useCount) {
  return Fill("<tt:Name>{name}</tt:Name><tt:UseCount>{count}</tt:UseCount>", {{"name", name}, {"count", useCount}});
}

std::string VideoSourceXml(const OnvifCamera& camera, const OnvifProfile& profile) {
  return Fill(
      "{entity}<tt:SourceToken>VideoSource_{channel}</tt:SourceToken>"
      "<tt:Bounds x=\"0\" y=\"0\" width=\"{width}\" height=\"{height}\"/>",
      {{"entity", EntityXml("Video source " + std::to_string(profile.channel), StreamsEach(camera))},
       {"channel", profile.channel},
       {"width", profile.stream->size.width},
       {"height", profile.stream->size.height}});
}

std::string AudioSourceXml(const OnvifCamera& camera, const OnvifProfile& profile) {
  const std::string channel = std::to_string(profile.channel);
  return EntityXml("Microphone " + channel, StreamsEach(camera)) + "<tt:SourceToken>AudioSource_" + channel +
         "</tt:SourceToken>";
}

std::string StreamAddressXml(const OnvifCamera& camera, const OnvifProfile& profile) {
  return camera.AddressXml(camera.streams + profile.stream->path);
}

std::string SnapshotAddressXml(const OnvifCamera& camera, const OnvifProfile& profile) {
  if (camera.onvif.snapshotUri == SnapshotUri::kNone) {
    throw NotSupported("there are no snapshots here");
  }
  if (camera.onvif.snapshotUri == SnapshotUri::kRtsp) return StreamAddressXml(camera, profile);
  std::string path = camera.config.snapshotPath;
  const Size size = profile.stream->size;
  if (size != camera.config.streams[0].size) {
    path += path.find('?') == std::string::npos ? "?" : "&";
    path += "size=" + std::to_string(size.width) + "x" + std::to_string(size.height);
  }
  return camera.AddressXml(camera.snapshots + path);
}

std::string ResolutionXml(const char* element, Size size) {
  return Fill("<{element}><tt:Width>{width}</tt:Width><tt:Height>{height}</tt:Height></{element}>",
              {{"element", element}, {"width", size.width}, {"height", size.height}});
}

std::string ResolutionsXml(const std::vector<OnvifProfile>& profiles, const Codec& codec) {
  std::vector<Size> sizes;
  std::string xml;
  for (const OnvifProfile& profile : profiles) {
    const Size size = profile.stream->size;
    if (profile.stream->codec != &codec || std::find(sizes.begin(), sizes.end(), size) != sizes.end()) continue;
    sizes.push_back(size);
    xml += ResolutionXml("tt:ResolutionsAvailable", size);
  }
  return xml;
}

int FastestOf(const std::vector<OnvifProfile>& profiles, const Codec& codec) {
  int fastest = 0;
  for (const OnvifProfile& profile : profiles) {
    if (profile.stream->codec == &codec) fastest = std::max(fastest, profile.stream->fps);
  }
  return fastest;
}

std::string RangeXml(const char* element, int least, int most) {
  return Fill("<{element}><tt:Min>{least}</tt:Min><tt:Max>{most}</tt:Max></{element}>",
              {{"element", element}, {"least", least}, {"most", most}});
}

}  // namespace simcam
