#include "recorder/device/asked/onvif/profiles.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "recorder/device/asked/onvif/motion.h"
#include "recorder/device/asked/onvif/numbers.h"
#include "recorder/media/codecs.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"

namespace recorder::onvif {
namespace {

constexpr int kMaxSide = 65'536;     // pixels
constexpr int kMaxFrameRate = 120;   // pictures a second
constexpr int kMaxQuality = 10'000;  // without a unit; the scale is the camera's own

XmlElement Part(XmlElement element, std::string_view name) { return element.Child(kSchemaNamespace, name); }

std::optional<Size> ReadSize(XmlElement resolution) {
  const auto width = WholeNumber(Part(resolution, "Width").Text(), 1, kMaxSide);
  const auto height = WholeNumber(Part(resolution, "Height").Text(), 1, kMaxSide);
  if (!width || !height) return std::nullopt;
  return Size{*width, *height};
}

/// How the two media services name the parts of a profile.
struct ProfileNames {
  std::string_view nameSpace;
  std::string_view videoSource;
  std::string_view videoEncoder;
  std::string_view audioSource;
  std::string_view audioEncoder;
  std::string_view analytics;
};
constexpr ProfileNames kMedia1Names{
    kSchemaNamespace,           "VideoSourceConfiguration",  "VideoEncoderConfiguration",
    "AudioSourceConfiguration", "AudioEncoderConfiguration", "VideoAnalyticsConfiguration"};
constexpr ProfileNames kMedia2Names{kMedia2Namespace, "VideoSource",  "VideoEncoder",
                                    "AudioSource",    "AudioEncoder", "Analytics"};

std::optional<VideoEncoder> ReadEncoder(XmlElement encoder) {
  VideoEncoder read;
  read.token = encoder.Attribute("token");
  read.codec = NameOfOnvifCodec(Part(encoder, "Encoding").Text());
  read.resolution = ReadSize(Part(encoder, "Resolution"));
  read.frameRate = WholeNumber(Part(Part(encoder, "RateControl"), "FrameRateLimit").Text(), 1, kMaxFrameRate);
  read.quality = WholeNumber(Part(encoder, "Quality").Text(), -kMaxQuality, kMaxQuality);
  if (read.codec.empty()) return std::nullopt;
  return read;
}

Profile ReadProfile(XmlElement profile, const ProfileNames& names, XmlElement parts) {
  const auto part = [&](std::string_view name) { return parts.Child(names.nameSpace, name); };
  Profile read;
  read.token = profile.Attribute("token");
  read.source = Part(part(names.videoSource), "SourceToken").Text();
  read.encoder = ReadEncoder(part(names.videoEncoder));
  read.audioEncoder = part(names.audioEncoder).Attribute("token");
  read.hasAudio = part(names.audioSource) || part(names.audioEncoder);
  read.hasAnalytics = static_cast<bool>(part(names.analytics));
  read.detectsMotion = HasMotionPart(part(names.analytics));
  return read;
}

/// Adds a codec with its resolutions.
void AddCodec(const std::string& codec, XmlElement option, VideoOptions& options) {
  const auto isNew = [](const auto& list, const auto& value) {
    return std::find(list.begin(), list.end(), value) == list.end();
  };
  if (isNew(options.codecs, codec)) options.codecs.push_back(codec);
  for (const XmlElement resolution : option.Children(kSchemaNamespace, "ResolutionsAvailable")) {
    const auto size = ReadSize(resolution);
    if (!size || options.resolutions.size() >= kMostResolutions) continue;
    if (isNew(options.resolutions, *size)) options.resolutions.push_back(*size);
  }
}

void AddFrameRateRange(XmlElement range, VideoOptions& options) {
  constexpr int kNoLimit = 1'000'000;
  const auto min = WholeNumber(Part(range, "Min").Text(), 0, kNoLimit);
  const auto max = WholeNumber(Part(range, "Max").Text(), 0, kNoLimit);
  if (!min || !max) return;
  for (int rate = std::max(*min, 1); rate <= std::min(*max, kMaxFrameRate); ++rate) options.frameRates.insert(rate);
}

void AddFrameRateList(const std::string& list, VideoOptions& options) {
  std::string_view rest = Trimmed(list);
  while (!rest.empty()) {
    if (const auto rate = WholeNumber(TakeUntil(rest, ' '), 1, kMaxFrameRate)) options.frameRates.insert(*rate);
  }
}

/// Widens the quality range by `range`.
void AddQuality(XmlElement range, VideoOptions& options) {
  const auto min = WholeNumber(Part(range, "Min").Text(), -kMaxQuality, kMaxQuality);
  const auto max = WholeNumber(Part(range, "Max").Text(), -kMaxQuality, kMaxQuality);
  if (!min || !max || *min > *max) return;
  const VideoOptions::Range before = options.quality.value_or(VideoOptions::Range{*min, *max});
  options.quality = {std::min(before.min, *min), std::max(before.max, *max)};
}

/// Names of the children of `element`, each once.
std::vector<std::string> ChildNames(XmlElement element) {
  std::vector<std::string> names;
  for (const XmlElement child : element.Children()) {
    if (std::find(names.begin(), names.end(), child.Name()) == names.end()) names.push_back(child.Name());
  }
  return names;
}

void AddMedia1Codec(XmlElement level, const std::string& name, VideoOptions& options) {
  const std::string codec(NameOfOnvifCodec(name));
  if (codec.empty()) return;
  for (const XmlElement option : level.Children(kSchemaNamespace, name)) {
    AddCodec(codec, option, options);
    AddFrameRateRange(Part(option, "FrameRateRange"), options);
  }
}

/// Media 1 has one element a codec. Codecs that came later, and some that came again, are in an extension, which may
/// itself be extended.
void AddMedia1Options(XmlElement all, VideoOptions& options) {
  AddQuality(Part(all, "QualityRange"), options);
  for (XmlElement level = all; level; level = Part(level, "Extension")) {
    for (const std::string& name : ChildNames(level)) AddMedia1Codec(level, name, options);
  }
}

void AddMedia2Option(XmlElement option, VideoOptions& options) {
  const std::string codec(NameOfOnvifCodec(Part(option, "Encoding").Text()));
  if (codec.empty()) return;
  AddCodec(codec, option, options);
  AddFrameRateList(option.Attribute("FrameRatesSupported"), options);
  AddQuality(Part(option, "QualityRange"), options);
}

}  // namespace

std::vector<Profile> ReadProfiles(XmlElement answer, const Service& media) {
  const bool isMedia2 = media.nameSpace == kMedia2Namespace;
  std::vector<Profile> profiles;
  for (const XmlElement profile : answer.Children(media.nameSpace, "Profiles")) {
    if (profiles.size() == kMostOnvifProfiles) break;
    Profile read = isMedia2 ? ReadProfile(profile, kMedia2Names, profile.Child(kMedia2Namespace, "Configurations"))
                            : ReadProfile(profile, kMedia1Names, profile);
    if (!read.token.empty() && !read.source.empty()) profiles.push_back(std::move(read));
  }
  return profiles;
}

std::vector<std::string> SourcesOf(const std::vector<Profile>& profiles) {
  std::vector<std::string> sources;
  for (const Profile& profile : profiles) {
    if (std::ranges::find(sources, profile.source) == sources.end()) sources.push_back(profile.source);
  }
  return sources;
}

VideoOptions ReadVideoOptions(XmlElement answer, const Service& media) {
  VideoOptions options;
  if (media.nameSpace == kMedia1Namespace) {
    AddMedia1Options(answer.Child(kMedia1Namespace, "Options"), options);
    return options;
  }
  for (const XmlElement option : answer.Children(kMedia2Namespace, "Options")) AddMedia2Option(option, options);
  return options;
}

}  // namespace recorder::onvif
