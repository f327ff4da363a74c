#include "recorder/decode/rehearsal.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>

#include "recorder/decode/jpeg.h"
#include "recorder/decode/jpeg_check.h"
#include "recorder/decode/key_frame_finder.h"
#include "recorder/decode/picture_decoder.h"
#include "recorder/media/codecs.h"

namespace recorder {
namespace {

/// A grey picture whose depth, levels and matrix all have to be changed.
Frame MakeFrame() {
  Frame frame(av_frame_alloc());
  if (!frame) throw std::bad_alloc();
  frame->format = AV_PIX_FMT_YUV420P10;
  frame->width = 64;
  frame->height = 64;
  frame->colorspace = AVCOL_SPC_BT709;
  if (av_frame_get_buffer(frame.get(), 0) < 0) throw std::bad_alloc();
  for (int plane = 0; plane < 3; ++plane) {
    const auto rows = static_cast<std::size_t>(plane == 0 ? frame->height : frame->height / 2);
    std::memset(frame->data[plane], 1, static_cast<std::size_t>(frame->linesize[plane]) * rows);
  }
  return frame;
}

void TryStream(std::string_view encoding) {
  const std::string description =
      "v=0\r\no=- 0 0 IN IP4 0.0.0.0\r\ns=-\r\nt=0 0\r\nm=video 0 RTP/AVP 96\r\na=rtpmap:96 " + std::string(encoding) +
      "/90000\r\n";
  constexpr std::array<std::uint8_t, 16> kPacket = {0x80, 96, 0, 1};
  KeyFrameFinder finder(description, [](auto) {});
  if (finder.Codec() != 0) finder.Feed(kPacket, false);
  finder.Look(true);
}

}  // namespace

void RehearseDecoding() {
  const auto picture = EncodeJpeg(MakeFrame());
  if (picture) {
    IsWholeJpeg(picture->Span());
    SizeOfJpeg(picture->Span());
  }
  constexpr std::array<std::uint8_t, 5> kUnit = {0, 0, 1, 0, 0};
  for (const Codec& codec : Codecs()) {
    if (!codec.rtp) continue;
    DecodeKeyFrame(codec.rtp->code, {}, kUnit);
    TryStream(codec.rtp->encoding);
  }
}

}  // namespace recorder
