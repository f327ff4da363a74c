#include "recorder/device/find/profile_streams.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace recorder::find {
namespace {

constexpr std::array<const char*, 3> kNames = {"main", "sub", "third"};

using Profiles = std::vector<const onvif::Profile*>;

/// Profiles with an encoder, by video source; of those that share an encoder the first.
std::vector<Profiles> BySource(const std::vector<onvif::Profile>& profiles) {
  std::vector<Profiles> sources;
  for (const onvif::Profile& profile : profiles) {
    if (!profile.encoder) continue;
    auto source = std::ranges::find_if(sources, [&](const Profiles& s) { return s.front()->source == profile.source; });
    if (source == sources.end()) source = sources.insert(sources.end(), Profiles());
    const bool isThere = !profile.encoder->token.empty() && std::ranges::any_of(*source, [&](const onvif::Profile* p) {
      return p->encoder->token == profile.encoder->token;
    });
    if (!isThere) source->push_back(&profile);
  }
  return sources;
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
  found.stream.name = number < kNames.size() ? kNames[number] : "";
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
  for (Profiles& source : BySource(profiles)) {
    std::ranges::stable_sort(source, std::ranges::greater(), PixelsOf);
    int place = 0;
    for (const onvif::Profile* profile : source) streams.push_back(StreamOf(*profile, channel, place++));
    ++channel;
  }
  return streams;
}

}  // namespace recorder::find
