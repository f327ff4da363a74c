#include <gtest/gtest.h>
#include <turbojpeg.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <vector>

#include "platform/media.h"
#include "recorder/media/libav.h"
#include "recorder/utility/handle.h"

namespace recorder {
namespace {

constexpr int kWidth = 322;  // no multiple of a block
constexpr int kHeight = 178;

/// A coded key frame and its configuration.
struct KeyFrame {
  std::vector<std::uint8_t> configuration;
  std::vector<std::uint8_t> unit;
};

/// The upper half black, the lower half white at video levels, with a fine pattern in the middle.
void Paint(AVFrame& frame) {
  for (int y = 0; y < kHeight; ++y) {
    std::uint8_t* row = frame.data[0] + std::ptrdiff_t{y} * frame.linesize[0];
    for (int x = 0; x < kWidth; ++x) row[x] = static_cast<std::uint8_t>(y < kHeight / 2 ? 16 : 235);
    if (y / 32 == 2)
      std::for_each(row, row + kWidth, [&](std::uint8_t& p) { p = std::uint8_t(16 + (&p - row) * 31 % 200); });
  }
  for (const int plane : {1, 2}) std::memset(frame.data[plane], 128, std::size_t(frame.linesize[plane]) * kHeight / 2);
}

KeyFrame Encode() {
  const CodecContext encoder(avcodec_alloc_context3(avcodec_find_encoder(AV_CODEC_ID_MPEG4)));
  encoder->width = kWidth;
  encoder->height = kHeight;
  encoder->pix_fmt = AV_PIX_FMT_YUV420P;
  encoder->time_base = {1, 25};
  encoder->bit_rate = 4'000'000;
  encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  EXPECT_EQ(avcodec_open2(encoder.get(), nullptr, nullptr), 0);
  const Frame frame(av_frame_alloc());
  frame->width = kWidth;
  frame->height = kHeight;
  frame->format = AV_PIX_FMT_YUV420P;
  EXPECT_EQ(av_frame_get_buffer(frame.get(), 0), 0);
  Paint(*frame);
  const AvPacket packet(av_packet_alloc());
  EXPECT_EQ(avcodec_send_frame(encoder.get(), frame.get()), 0);
  EXPECT_EQ(avcodec_receive_packet(encoder.get(), packet.get()), 0);
  return {{encoder->extradata, encoder->extradata + encoder->extradata_size},
          {packet->data, packet->data + packet->size}};
}

struct Jpeg {
  int result = 0;
  MallocBytes bytes;
  int size = 0;
};

Jpeg Make(const KeyFrame& frame, int videoType = VIDEO_TYPE_MPEG4) {
  unsigned char* bytes = nullptr;
  int size = 0;
  const int result =
      DoFFMpegGetJpeg(videoType, frame.configuration.data(), static_cast<int>(frame.configuration.size()),
                      frame.unit.data(), static_cast<int>(frame.unit.size()), &bytes, &size);
  return {result, MallocBytes(bytes), size};
}

TEST(JpegTest, HasSizeAndFullRangeWhateverTheVideoTypeSays) {
  const Jpeg jpeg = Make(Encode(), VIDEO_TYPE_H264);
  ASSERT_EQ(jpeg.result, 0);
  int width = 0;
  int height = 0;
  GetJpegReso(jpeg.bytes.get(), jpeg.size, &width, &height);
  ASSERT_EQ(width, kWidth);
  ASSERT_EQ(height, kHeight);
  std::vector<unsigned char> grey(std::size_t{kWidth} * kHeight);
  const std::unique_ptr<void, Deleter<tjDestroy>> reader(tjInitDecompress());
  ASSERT_EQ(tjDecompress2(reader.get(), jpeg.bytes.get(), static_cast<unsigned long>(jpeg.size), grey.data(), kWidth, 0,
                          kHeight, TJPF_GRAY, 0),
            0);
  EXPECT_LE(grey.front(), 3);
  EXPECT_GE(grey.back(), 252);
}

TEST(JpegTest, HandsOnAWholeJpegAsItIs) {
  const Jpeg made = Make(Encode());
  const KeyFrame whole{{}, {made.bytes.get(), made.bytes.get() + made.size}};
  const Jpeg again = Make(whole);
  ASSERT_EQ(again.result, 0);
  EXPECT_TRUE(std::equal(whole.unit.begin(), whole.unit.end(), again.bytes.get(), again.bytes.get() + again.size));
}

struct DamageCase {
  const char* name;
  void (*damage)(KeyFrame& frame);
};

const DamageCase kDamageCases[] = {
    {"HalfMissing", [](KeyFrame& frame) { frame.unit.resize(frame.unit.size() / 2); }},
    {"BytesFlipped", [](KeyFrame& frame) { std::fill_n(frame.unit.begin() + std::ssize(frame.unit) / 2, 60, 0xa5); }},
    {"NoConfiguration", [](KeyFrame& frame) { frame.configuration.clear(); }},
    {"Empty", [](KeyFrame& frame) { frame.unit.clear(); }},
    {"JpegWithoutItsEnd",
     [](KeyFrame& frame) {
       const Jpeg jpeg = Make(frame);
       frame.unit.assign(jpeg.bytes.get(), jpeg.bytes.get() + jpeg.size - 100);
     }},
};

class DamageTest : public testing::TestWithParam<DamageCase> {};

TEST_P(DamageTest, IsNoPicture) {
  KeyFrame frame = Encode();
  ASSERT_EQ(Make(frame).result, 0);
  GetParam().damage(frame);
  const Jpeg jpeg = Make(frame);
  EXPECT_NE(jpeg.result, 0);
  EXPECT_EQ(jpeg.bytes, nullptr);
}

INSTANTIATE_TEST_SUITE_P(Jpeg, DamageTest, testing::ValuesIn(kDamageCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(JpegTest, UnreadableBytesHaveNoSize) {
  const std::array<unsigned char, 4> bytes{0xff, 0xd8, 0xff, 0xd9};
  int width = 5;
  int height = 5;
  GetJpegReso(bytes.data(), static_cast<int>(bytes.size()), &width, &height);
  EXPECT_EQ(width + height, 0);
  width = height = 5;
  GetJpegReso(nullptr, 0, &width, &height);
  EXPECT_EQ(width + height, 0);
}

}  // namespace
}  // namespace recorder
