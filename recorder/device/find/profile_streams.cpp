#include "recorder/device/find/profile_streams.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "recorder/records/camera_record.h"

namespace recorder::find {
namespace {

using Profiles = std::vector<const onvif::Profile*>;

/// Profiles of a video source that have an encoder; of those that share one the first.
Profiles ProfilesOf(const std::string& source, const std::vector<onvif::Profile>& profiles) {
  Profiles found;
  for (const onvif::Profile& profile : profiles) {
    if (profile.source != source || !profile.encoder) continue;
    const bool isThere = !profile.encoder->token.empty() && std::ranges::any_of(found, [&](const onvif::Profile* p) {
      return p->encoder->token == profile.encoder->token;
    });
    if (!isThere) found.push_back(&profile);
  }
  return found;
}

std::int64_t PixelsOf(const onvif::Profile* profile) {
  const onvif::Size size = profile->encoder->resolution.value_or(onvif::Size{});
  return std::int64_t{size.width} * size.height;
}

ProfileStream StreamOf(const onvif::Profile& profile, int channel, int place) {
  const onvif::VideoEncoder& encoder = *profile.encoder;
  const onvif::Size size = encoder.resolution.value_or(onvif::Size{});
  const std::size_t number = static_cast<std::size_t>(place);
  ProfileStream found{{channel, place, profile.token}, {}};
  found.stream.channel = std::to_string(channel + 1);
  found.stream.name = number < kStreamNames.size() ? kStreamNames[number] : "";
  found.stream.codec = encoder.codec;
  found.stream.width = size.width;
  found.stream.height = size.height;
  found.stream.frameRate = encoder.frameRate.value_or(0);
  found.stream.profile = profile.token;
  found.stream.from = kOnvifSays;
  return found;
}

}  // namespace

std::vector<ProfileStream> StreamsOf(const std::vector<onvif::Profile>& profiles) {
  std::vector<ProfileStream> streams;
  int channel = 0;
  for (const std::string& source : onvif::SourcesOf(profiles)) {
    const Profiles inOrder = ProfilesOf(source, profiles);
    Profiles bySize = inOrder;
    std::ranges::stable_sort(bySize, std::ranges::greater(), PixelsOf);
    int place = 0;
    for (const onvif::Profile* profile : bySize) {
      streams.push_back(StreamOf(*profile, channel, place++));
      streams.back().stream.isShownByOnvif = profile == inOrder.front();
    }
    ++channel;
  }
  return streams;
}

}  // namespace recorder::find
