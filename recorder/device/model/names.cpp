#include <string>
#include <string_view>
#include <utility>

#include "platform/device.h"
#include "recorder/media/codecs.h"
#include "recorder/utility/translate.h"

namespace {

constexpr std::pair<std::string_view, int> kStreamingTypes[] = {
    {"", STREAMING_TYPE_ANY},
    {"HTTP", STREAMING_TYPE_HTTP},
    {"RTSP", STREAMING_TYPE_RTSP},
};

}  // namespace

int GetVideoType(const std::string& name) {
  if (name.empty()) return VIDEO_TYPE_ANY;
  const recorder::Codec* codec = recorder::CodecOfName(name);
  return codec == nullptr ? VIDEO_TYPE_UNKNOWN : codec->type;
}

int GetStreamingType(const std::string& name) {
  return recorder::Translate(kStreamingTypes, name, STREAMING_TYPE_UNKNOWN);
}
