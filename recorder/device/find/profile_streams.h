#pragma once

#include <vector>

#include "recorder/device/asked/onvif/profiles.h"
#include "recorder/device/find/find.h"
#include "recorder/device/find/path_pattern.h"

namespace recorder::find {

/// A stream that a profile stands for. Its address is still to be asked for.
struct ProfileStream {
  StreamSpot spot;
  ListedStream stream;
};

/// The streams of `profiles`, by channel and then by size, one for each encoder of a video source. Channels are the
/// sources in the order in which they are named first. Pure.
std::vector<ProfileStream> StreamsOf(const std::vector<onvif::Profile>& profiles);

}  // namespace recorder::find
