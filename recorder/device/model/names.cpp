#include <string>
#include <string_view>
#include <utility>

#include "platform/device.h"
#include "recorder/utility/translate.h"

namespace {

using Name = std::pair<std::string_view, int>;

constexpr Name kVideoTypes[] = {
    {"", VIDEO_TYPE_ANY},       {"MJPEG", VIDEO_TYPE_MJPEG}, {"MPEG4", VIDEO_TYPE_MPEG4},
    {"H.264", VIDEO_TYPE_H264}, {"MXPEG", VIDEO_TYPE_MXPEG}, {"H.265", VIDEO_TYPE_H265},
};

constexpr Name kStreamingTypes[] = {
    {"", STREAMING_TYPE_ANY},
    {"HTTP", STREAMING_TYPE_HTTP},
    {"RTSP", STREAMING_TYPE_RTSP},
};

}  // namespace

int GetVideoType(const std::string& name) { return recorder::Translate(kVideoTypes, name, VIDEO_TYPE_UNKNOWN); }

int GetStreamingType(const std::string& name) {
  return recorder::Translate(kStreamingTypes, name, STREAMING_TYPE_UNKNOWN);
}
