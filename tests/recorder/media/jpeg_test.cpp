#include <gtest/gtest.h>
#include <turbojpeg.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "platform/media.h"
#include "recorder/media/libav.h"
#include "recorder/utility/handle.h"

namespace recorder {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int kWidth = 322;  // no multiple of a block
constexpr int kHeight = 178;

/// A coded key frame and its configuration.
struct KeyFrame {
  Bytes configuration;
  Bytes unit;
};

/// The upper half black, the lower half white at video levels, with a fine pattern between them.
void Paint(AVFrame& frame) {
  for (int y = 0; y < kHeight; ++y) {
    std::uint8_t* row = frame.data[0] + std::ptrdiff_t{y} * frame.linesize[0];
    const bool hasPattern = y / 32 == 2;
    for (int x = 0; x < kWidth; ++x) row[x] = std::uint8_t(hasPattern ? 16 + x * 31 % 200 : y < 89 ? 16 : 235);
  }
  for (const int plane : {1, 2}) std::fill_n(frame.data[plane], frame.linesize[plane] * kHeight / 2, 128);
}

KeyFrame Encode() {
  const CodecContext encoder(avcodec_alloc_context3(avcodec_find_encoder(AV_CODEC_ID_MPEG4)));
  const Frame frame(av_frame_alloc());
  const AvPacket packet(av_packet_alloc());
  encoder->width = frame->width = kWidth;
  encoder->height = frame->height = kHeight;
  frame->format = encoder->pix_fmt = AV_PIX_FMT_YUV420P;
  encoder->time_base = {1, 25};
  encoder->bit_rate = 4'000'000;
  encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  EXPECT_EQ(avcodec_open2(encoder.get(), nullptr, nullptr), 0);
  EXPECT_EQ(av_frame_get_buffer(frame.get(), 0), 0);
  Paint(*frame);
  EXPECT_EQ(avcodec_send_frame(encoder.get(), frame.get()), 0);
  EXPECT_EQ(avcodec_receive_packet(encoder.get(), packet.get()), 0);
  return {{encoder->extradata, encoder->extradata + encoder->extradata_size},
          {packet->data, packet->data + packet->size}};
}

/// The JPEG of a key frame; empty when there is none.
Bytes Make(const KeyFrame& frame, int videoType = VIDEO_TYPE_MPEG4) {
  unsigned char* bytes = nullptr;
  int size = 0;
  const int result =
      DoFFMpegGetJpeg(videoType, frame.configuration.data(), static_cast<int>(frame.configuration.size()),
                      frame.unit.data(), static_cast<int>(frame.unit.size()), &bytes, &size);
  const MallocBytes owner(bytes);
  EXPECT_EQ(result == 0, bytes != nullptr);
  return {bytes, bytes + size};
}

std::pair<int, int> SizeOf(const Bytes& jpeg) {
  std::pair<int, int> size{5, 5};
  GetJpegReso(jpeg.data(), static_cast<int>(jpeg.size()), &size.first, &size.second);
  return size;
}

TEST(JpegTest, HasSizeAndFullRangeWhateverTheVideoTypeSays) {
  const Bytes jpeg = Make(Encode(), VIDEO_TYPE_H264);
  ASSERT_EQ(SizeOf(jpeg), std::pair(kWidth, kHeight));
  Bytes grey(std::size_t{kWidth} * kHeight);
  const std::unique_ptr<void, Deleter<tjDestroy>> reader(tjInitDecompress());
  tjDecompress2(reader.get(), jpeg.data(), jpeg.size(), grey.data(), kWidth, 0, kHeight, TJPF_GRAY, 0);
  EXPECT_LE(grey.front(), 3);
  EXPECT_GE(grey.back(), 252);
  EXPECT_EQ(Make({{}, jpeg}), jpeg) << "a camera's own JPEG is handed on as it is";
  EXPECT_EQ(SizeOf({0xff, 0xd8, 0xff, 0xd9}), std::pair(0, 0));
  EXPECT_EQ(SizeOf({}), std::pair(0, 0));
}

TEST(JpegTest, ADamagedFrameIsNoPicture) {
  const KeyFrame good = Encode();
  KeyFrame half = good;
  half.unit.resize(good.unit.size() / 2);
  KeyFrame flipped = good;
  std::fill_n(flipped.unit.begin() + std::ssize(good.unit) / 2, 60, 0xa5);
  Bytes jpeg = Make(good);
  jpeg.resize(jpeg.size() - 100);
  EXPECT_EQ(Make(half), Bytes());
  EXPECT_EQ(Make(flipped), Bytes());
  EXPECT_EQ(Make({{}, jpeg}), Bytes());
  EXPECT_EQ(Make({{}, good.unit}), Bytes()) << "no configuration";
}

}  // namespace
}  // namespace recorder
