#include "recorder/net/sdp.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace recorder {
namespace {

constexpr std::string_view kSession = "v=0\r\no=- 1 1 IN IP4 10.0.0.9\r\ns=cam\r\nc=IN IP4 0.0.0.0\r\na=control:*\r\n";
constexpr std::string_view kAudio = "m=audio 0 RTP/AVP 0\r\na=control:track1\r\n";

struct VideoCase {
  const char* name;
  std::string media;
  const char* codec;  // null: no video
  const char* control;
};

const VideoCase kVideoCases[] = {
    {"AudioFirst",
     std::string(kAudio) + "m=video 0 RTP/AVP 96 97\r\na=rtpmap:97 H265/90000\r\na=rtpmap:96 h264/90000\r\n"
                           "a=control:track2\r\n",
     "H264", "track2"},
    {"FirstOfTwo", "m=video 0 RTP/AVP 26\na=control:rtsp://cam/v1\nm=video 0 RTP/AVP 96\na=control:v2\n", "JPEG",
     "rtsp://cam/v1"},
    {"AudioAfterVideo", "m=video 0 RTP/AVP 96\r\na=rtpmap:96 MP4V-ES/90000\r\n" + std::string(kAudio), "MP4V-ES", ""},
    {"EncryptedOnly", "m=video 0 RTP/SAVP 96\r\na=rtpmap:96 H264/90000\r\n", nullptr, ""},
    {"AudioOnly", std::string(kAudio), nullptr, ""},
    {"MediaLineCutShort", "m=video 0", nullptr, ""},
};

class VideoTest : public testing::TestWithParam<VideoCase> {};

TEST_P(VideoTest, FindsTheFirstReadable) {
  const auto video = FindVideo(std::string(kSession) + GetParam().media);
  ASSERT_EQ(video.has_value(), GetParam().codec != nullptr);
  if (!video) return;
  EXPECT_EQ(video->codec, GetParam().codec);
  EXPECT_EQ(video->control, GetParam().control);
  EXPECT_EQ(video->sessionControl, "*");
  EXPECT_EQ(video->description.find("audio"), std::string::npos);
  EXPECT_EQ(video->description.find("10.0.0.9"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Sdp, VideoTest, testing::ValuesIn(kVideoCases),
                         [](const auto& row) { return std::string(row.param.name); });

struct ControlCase {
  const char* name;
  const char* base;
  const char* control;
  const char* address;
};

const ControlCase kControlCases[] = {
    {"Relative", "rtsp://h/live/", "track1", "rtsp://h/live/track1"},
    {"SlashIsMissing", "rtsp://h/live", "track1", "rtsp://h/live/track1"},
    {"SlashOnBothSides", "rtsp://h/live/", "/track1", "rtsp://h/live/track1"},
    {"QueryInBase", "rtsp://h/live?ch=1", "trackID=1", "rtsp://h/live?ch=1/trackID=1"},
    {"Absolute", "rtsp://h/live/", "rtsp://10.0.0.9/v", "rtsp://10.0.0.9/v"},
    {"Star", "rtsp://h/live/", "*", "rtsp://h/live/"},
    {"Empty", "rtsp://h/live/", "", "rtsp://h/live/"},
};

class ControlTest : public testing::TestWithParam<ControlCase> {};

TEST_P(ControlTest, ResolvesAgainstBase) {
  EXPECT_EQ(ResolveControl(GetParam().base, GetParam().control), GetParam().address);
}

INSTANTIATE_TEST_SUITE_P(Sdp, ControlTest, testing::ValuesIn(kControlCases),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace recorder
