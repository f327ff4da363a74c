#include "recorder/net/rtsp/sdp.h"

#include <gtest/gtest.h>

#include <string>

#include "recorder/net/rtsp/rtsp_headers.h"

namespace recorder {
namespace {

const std::string kSession = "v=0\r\no=- 1 1 IN IP4 10.0.0.9\r\ns=cam\r\nc=IN IP4 0.0.0.0\r\na=control:*\r\n";
const std::string kAudio = "m=audio 0 RTP/AVP 0\r\na=control:track1\r\n";
const std::string kVideo = "m=video 0 RTP/AVP 96 97\r\na=rtpmap:97 H265/90000\r\na=rtpmap:96 h264/90000\r\n";

/// Codec and control address of the video in `media`, or "none".
std::string Video(const std::string& media) {
  const auto video = FindVideo(kSession + media);
  if (!video) return "none";
  EXPECT_EQ(video->sessionControl, "*");
  EXPECT_EQ(video->description.find("audio"), std::string::npos);
  EXPECT_EQ(video->description.find("10.0.0.9"), std::string::npos);
  EXPECT_EQ(video->description.find("H265"), std::string::npos) << "of another payload type";
  return video->codec + ' ' + video->control;
}

TEST(SdpTest, TheFirstReadableVideoIsFound) {
  EXPECT_EQ(Video(kAudio + kVideo + "a=control:track2\r\n"), "H264 track2");
  EXPECT_EQ(Video(kVideo + kAudio), "H264 ") << "the control address is the audio's";
  EXPECT_EQ(Video("m=video 0 RTP/AVP 26\na=control:rtsp://cam/v1\n" + kVideo), "JPEG rtsp://cam/v1");
  EXPECT_EQ(Video("m=video 0 RTP/SAVP 96\r\na=rtpmap:96 VP8/90000\r\n" + kVideo), "H264 ") << "the first is encrypted";
  EXPECT_EQ(Video("m=video  0  TCP/rtp/avp  96\r\na=rtpmap:96  h264/90000\r\n"), "H264 ");
  EXPECT_EQ(Video("m=video 0 RTP/AVP 33\r\na=rtpmap:33 H264/90000\r\n"), "MP2T ") << "the number says it already";
  EXPECT_EQ(Video(kAudio), "none");
  EXPECT_EQ(Video("m=video 0"), "none") << "cut short";
}

TEST(SdpTest, AudioBesideTheVideoIsNamed) {
  EXPECT_EQ(FindAudio(kSession + kVideo + kAudio), "PCMU");
  EXPECT_EQ(FindAudio(kSession + "m=audio 0 RTP/AVP 97\na=rtpmap:97 mpeg4-generic/16000\n" + kVideo), "MPEG4-GENERIC");
  EXPECT_EQ(FindAudio(kSession + kVideo), "");
  EXPECT_EQ(FindVideo(kVideo)->clockRate, 90'000);
  EXPECT_EQ(FindVideo("m=video 0 RTP/AVP 96\na=rtpmap:96 MP4V-ES/25000\n")->clockRate, 25'000);
}

TEST(SdpTest, ControlIsResolvedAgainstTheBase) {
  EXPECT_EQ(ResolveControl("rtsp://h/live/", "track1"), "rtsp://h/live/track1");
  EXPECT_EQ(ResolveControl("rtsp://h/live", "track1"), "rtsp://h/live/track1");
  EXPECT_EQ(ResolveControl("rtsp://h/live/", "/track1"), "rtsp://h/live/track1");
  EXPECT_EQ(ResolveControl("rtsp://h/live?ch=1", "trackID=1"), "rtsp://h/live?ch=1/trackID=1");
  EXPECT_EQ(ResolveControl("rtsp://h/live/", "rtsp://10.0.0.9/v"), "rtsp://10.0.0.9/v");
  EXPECT_EQ(ResolveControl("rtsp://h/live/", "*"), "rtsp://h/live/");
  EXPECT_EQ(ResolveControl("rtsp://h/live/", ""), "rtsp://h/live/");
}

TEST(RtspAddressTest, LocationIsCompletedFromTheAddressThatWasAsked) {
  EXPECT_EQ(WholeAddress("rtsp://h:8554/a/b?c=/d", "rtsp://h/x"), "rtsp://h/x");
  EXPECT_EQ(WholeAddress("rtsp://h:8554/a/b?c=/d", "/x"), "rtsp://h:8554/x");
  EXPECT_EQ(WholeAddress("rtsp://h:8554/a/b?c=/d", "x"), "rtsp://h:8554/a/x");
}

}  // namespace
}  // namespace recorder
