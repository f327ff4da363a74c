#include "recorder/decode/jpeg.h"

#include <gtest/gtest.h>
#include <turbojpeg.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace recorder {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int kWidth = 322;  // no multiple of a block
constexpr int kHeight = 178;

/// Video of one colour, and how it is marked.
struct Video {
  const char* name;
  AVPixelFormat format;
  AVColorSpace marked;
  AVColorRange range;
  double red, blue;  ///< their parts in luma
  int height = 480;
};

constexpr Video kVideos[] = {
    {"601", AV_PIX_FMT_YUV420P, AVCOL_SPC_SMPTE170M, AVCOL_RANGE_MPEG, 0.299, 0.114},
    {"601 full", AV_PIX_FMT_YUV420P, AVCOL_SPC_BT470BG, AVCOL_RANGE_JPEG, 0.299, 0.114, 720},
    {"601 full 4:4:4", AV_PIX_FMT_YUVJ444P, AVCOL_SPC_SMPTE170M, AVCOL_RANGE_UNSPECIFIED, 0.299, 0.114},
    {"709", AV_PIX_FMT_YUV420P, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG, 0.2126, 0.0722},
    {"709 full 4:2:2", AV_PIX_FMT_YUVJ422P, AVCOL_SPC_BT709, AVCOL_RANGE_JPEG, 0.2126, 0.0722},
    {"709 full 4:4:4", AV_PIX_FMT_YUV444P, AVCOL_SPC_BT709, AVCOL_RANGE_JPEG, 0.2126, 0.0722},
    {"unmarked", AV_PIX_FMT_YUV420P, AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_UNSPECIFIED, 0.299, 0.114, 719},
    {"unmarked HD", AV_PIX_FMT_YUV420P, AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_UNSPECIFIED, 0.2126, 0.0722, 720},
    {"601, 10 bits", AV_PIX_FMT_YUV420P10, AVCOL_SPC_SMPTE170M, AVCOL_RANGE_JPEG, 0.299, 0.114},
    {"709, 10 bits 4:2:2", AV_PIX_FMT_YUV422P10, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG, 0.2126, 0.0722},
    {"2020, 12 bits", AV_PIX_FMT_YUV420P12, AVCOL_SPC_BT2020_NCL, AVCOL_RANGE_MPEG, 0.2627, 0.0593},
};

constexpr double kColour[] = {200, 90, 40};  // red, green, blue

Frame MakeVideo(const Video& video) {
  Frame frame(av_frame_alloc());
  frame->format = video.format;
  frame->width = kWidth;
  frame->height = video.height;
  frame->colorspace = video.marked;
  frame->color_range = video.range;
  EXPECT_EQ(av_frame_get_buffer(frame.get(), 0), 0);
  const auto [red, green, blue] = kColour;
  const double luma = video.red * red + (1 - video.red - video.blue) * green + video.blue * blue;
  const double planes[] = {luma, (blue - luma) / 2 / (1 - video.blue), (red - luma) / 2 / (1 - video.red)};
  const AVPixFmtDescriptor* format = av_pix_fmt_desc_get(video.format);
  const bool isFull = video.range == AVCOL_RANGE_JPEG || video.format == AV_PIX_FMT_YUVJ444P;
  for (int plane = 0; plane < 3; ++plane) {
    const double scaled = isFull ? planes[plane] : planes[plane] * (plane == 0 ? 219 : 224) / 255;
    const double zero = plane > 0 ? 128 : isFull ? 0 : 16;
    const auto value = static_cast<std::uint16_t>(std::lround((scaled + zero) * (1 << (format->comp[0].depth - 8))));
    const int rows = AV_CEIL_RSHIFT(video.height, format->log2_chroma_h);  // the luma of all that these stand for
    const int size = frame->linesize[plane] * (plane == 0 ? rows << format->log2_chroma_h : rows);
    if (format->comp[0].depth == 8) std::fill_n(frame->data[plane], size, static_cast<std::uint8_t>(value));
    if (format->comp[0].depth > 8) std::fill_n(reinterpret_cast<std::uint16_t*>(frame->data[plane]), size / 2, value);
  }
  return frame;
}

TEST(ColourTest, IsWhatTheVideoMeans) {
  for (const Video& video : kVideos) {
    const auto jpeg = EncodeJpeg(MakeVideo(video));
    ASSERT_TRUE(jpeg) << video.name;
    std::vector<std::uint8_t> pixels(std::size_t{kWidth} * static_cast<std::size_t>(video.height) * 3);
    const std::unique_ptr<void, Deleter<tjDestroy>> reader(tjInitDecompress());
    const auto bytes = jpeg->Span();
    tjDecompress2(reader.get(), bytes.data(), bytes.size(), pixels.data(), kWidth, 0, video.height, TJPF_RGB, 0);
    for (std::size_t at = 0; at < pixels.size(); at += pixels.size() - 3) {  // the first pixel and the last
      for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(pixels[at + i], kColour[i], 5) << video.name << " " << at + i;
    }
  }
}

TEST(ColourTest, APixelKeepsItsShape) {
  Frame frame = MakeVideo(kVideos[0]);
  frame->sample_aspect_ratio = {32, 22};
  const auto jpeg = EncodeJpeg(std::move(frame));
  ASSERT_TRUE(jpeg);
  const Bytes density(jpeg->Span().begin() + 13, jpeg->Span().begin() + 18);
  EXPECT_EQ(density, (Bytes{0, 0, 16, 0, 11}));
}

}  // namespace
}  // namespace recorder
