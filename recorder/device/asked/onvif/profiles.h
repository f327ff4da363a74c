#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "recorder/device/asked/onvif/names.h"
#include "recorder/device/asked/xml.h"

// The answers about profiles and video encoders, of either media service; see answers.h for what all readers share.

namespace recorder::onvif {

struct Size {
  int width = 0;
  int height = 0;
  bool operator==(const Size&) const = default;
};

/// A video encoder as it is set now.
struct VideoEncoder {
  std::string token;
  std::string codec;  ///< the recorder's name for it
  std::optional<Size> resolution;
  std::optional<int> frameRate;
  std::optional<int> quality;
};

/// A profile that shows a video source.
struct Profile {
  std::string token;
  std::string source;                   ///< token of the video source
  std::optional<VideoEncoder> encoder;  ///< none: the profile encodes no video, or with a codec unknown to us
  std::string audioEncoder;             ///< token, or ""
  bool hasAudio = false;
  bool hasAnalytics = false;
  bool detectsMotion = false;  ///< by its analytics
};

/// Of GetProfiles of the media service `media`.
std::vector<Profile> ReadProfiles(XmlElement answer, const Service& media);

/// The video sources of `profiles`, in the order in which they are named first: the channels, from 1.
std::vector<std::string> SourcesOf(const std::vector<Profile>& profiles);

/// What a video encoder can be set to, of all its codecs together.
struct VideoOptions {
  struct Range {
    int min = 0;
    int max = 0;
  };
  std::vector<std::string> codecs;  ///< the recorder's names
  std::vector<Size> resolutions;
  std::set<int> frameRates;
  std::optional<Range> quality;
};

/// Of GetVideoEncoderConfigurationOptions of the media service `media`.
VideoOptions ReadVideoOptions(XmlElement answer, const Service& media);

}  // namespace recorder::onvif
