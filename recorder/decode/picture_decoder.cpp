#include "recorder/decode/picture_decoder.h"

#include <cstring>
#include <new>
#include <string>
#include <utility>

#include "recorder/media/codecs.h"
#include "recorder/utility/limits.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace recorder {
namespace {

using Bytes = std::span<const std::uint8_t>;

CodecContext OpenDecoder(std::uint32_t codec, Bytes configuration) {
  SilenceLibav();
  const Codec* row = CodecOfCode(codec);
  if (row == nullptr) return nullptr;
  const AVCodec* decoder = avcodec_find_decoder_by_name(std::string(row->rtp->libavName).c_str());
  if (decoder == nullptr) return nullptr;
  CodecContext context(avcodec_alloc_context3(decoder));
  if (!context) throw std::bad_alloc();
  context->thread_count = 1;  // several begin each slice or row anew and do not notice damage in the one before
  context->max_pixels = kMostPixels;
  if (!configuration.empty()) {
    context->extradata = static_cast<std::uint8_t*>(av_mallocz(configuration.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    if (context->extradata == nullptr) throw std::bad_alloc();
    std::memcpy(context->extradata, configuration.data(), configuration.size());
    context->extradata_size = static_cast<int>(configuration.size());
  }
  return avcodec_open2(context.get(), decoder, nullptr) == 0 ? std::move(context) : nullptr;
}

AvPacket MakePacket(Bytes unit) {
  AvPacket packet(av_packet_alloc());
  if (!packet || av_new_packet(packet.get(), static_cast<int>(unit.size())) < 0) throw std::bad_alloc();
  std::memcpy(packet->data, unit.data(), unit.size());
  return packet;
}

/// True when a stretch of the picture was never written. The H.265 decoder does not tell that it gave up in
/// mid-picture, but what it left out is zero in both colour planes, which no colour is (ITU-R BT.601, BT.709, BT.2020:
/// green has U 36 and V 11 at least, at full range of 8 bits).
bool HasUndecodedArea(const AVFrame& frame) {
  const AVPixFmtDescriptor* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
  if (format == nullptr || frame.data[2] == nullptr || (format->flags & AV_PIX_FMT_FLAG_RGB) != 0) return false;
  constexpr int kRun = 16;  // bytes; fewer may be a coding artefact
  const int width = AV_CEIL_RSHIFT(frame.width, format->log2_chroma_w) * format->comp[1].step;
  const int height = AV_CEIL_RSHIFT(frame.height, format->log2_chroma_h);
  constexpr int kRowStep = 4;  // what is left out is larger
  for (int y = 0; y < height; y += kRowStep) {
    const std::uint8_t* u = frame.data[1] + std::ptrdiff_t{y} * frame.linesize[1];
    const std::uint8_t* v = frame.data[2] + std::ptrdiff_t{y} * frame.linesize[2];
    for (int x = 0, run = 0; x < width; ++x) {
      run = (u[x] | v[x]) == 0 ? run + 1 : 0;
      if (run == kRun) return true;
    }
  }
  return false;
}

}  // namespace

Frame DecodeKeyFrame(std::uint32_t codec, Bytes configuration, Bytes unit) {
  if (unit.empty()) return nullptr;
  const CodecContext context = OpenDecoder(codec, configuration);
  if (!context) return nullptr;
  Frame frame(av_frame_alloc());
  if (!frame) throw std::bad_alloc();
  const bool isDecoded = avcodec_send_packet(context.get(), MakePacket(unit).get()) == 0 &&
                         avcodec_send_packet(context.get(), nullptr) == 0 &&
                         avcodec_receive_frame(context.get(), frame.get()) == 0;
  if (!isDecoded) return nullptr;
  const bool isDamaged = frame->decode_error_flags != 0 || (frame->flags & AV_FRAME_FLAG_CORRUPT) != 0;
  return isDamaged || HasUndecodedArea(*frame) ? nullptr : std::move(frame);
}

}  // namespace recorder
