#include "recorder/media/key_picture.h"

#include <turbojpeg.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <new>
#include <utility>

#include "platform/utility.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace recorder {
namespace {

using TurboJpeg = std::unique_ptr<void, Deleter<tjDestroy>>;
using Table = std::array<std::uint8_t, 256>;

constexpr int kQuality = 85;

/// How a decoder's planes map to JPEG.
struct PlaneLayout {
  AVPixelFormat format;
  TJSAMP sampling;
};

constexpr PlaneLayout kLayouts[] = {
    {AV_PIX_FMT_YUV420P, TJSAMP_420},  {AV_PIX_FMT_YUVJ420P, TJSAMP_420}, {AV_PIX_FMT_YUV422P, TJSAMP_422},
    {AV_PIX_FMT_YUVJ422P, TJSAMP_422}, {AV_PIX_FMT_YUV444P, TJSAMP_444},  {AV_PIX_FMT_YUVJ444P, TJSAMP_444},
    {AV_PIX_FMT_GRAY8, TJSAMP_GRAY},
};

const PlaneLayout* FindLayout(int format) {
  const auto* row = std::find_if(std::begin(kLayouts), std::end(kLayouts),
                                 [format](const PlaneLayout& layout) { return layout.format == format; });
  return row == std::end(kLayouts) ? nullptr : row;
}

/// Maps `offset`..`offset + range` to the whole range of a byte around the same zero.
constexpr Table StretchTable(int offset, int range, int zero) {
  Table table{};
  for (int value = 0; value < 256; ++value) {
    const int stretched = (2 * (value - offset) * 255 + (value < offset ? -range : range)) / (2 * range) + zero;
    table[static_cast<std::size_t>(value)] = static_cast<std::uint8_t>(std::clamp(stretched, 0, 255));
  }
  return table;
}

void StretchPlane(std::uint8_t* plane, int stride, int width, int height, const Table& table) {
  for (int y = 0; y < height; ++y, plane += stride) {
    std::transform(plane, plane + width, plane, [&table](std::uint8_t value) { return table[value]; });
  }
}

/// Brings video levels (16 to 235, ITU-R BT.601) to the full range that JPEG (JFIF) means.
void StretchLevels(AVFrame& frame) {
  static constexpr Table kLuma = StretchTable(16, 219, 0);
  static constexpr Table kColour = StretchTable(128, 224, 128);
  StretchPlane(frame.data[0], frame.linesize[0], frame.width, frame.height, kLuma);
  if (frame.data[2] == nullptr) return;
  int shiftX = 0;
  int shiftY = 0;
  av_pix_fmt_get_chroma_sub_sample(static_cast<AVPixelFormat>(frame.format), &shiftX, &shiftY);
  for (const int plane : {1, 2}) {
    StretchPlane(frame.data[plane], frame.linesize[plane], AV_CEIL_RSHIFT(frame.width, shiftX),
                 AV_CEIL_RSHIFT(frame.height, shiftY), kColour);
  }
}

bool HasFullRange(const AVFrame& frame) {
  return frame.color_range == AVCOL_RANGE_JPEG || frame.format == AV_PIX_FMT_YUVJ420P ||
         frame.format == AV_PIX_FMT_YUVJ422P || frame.format == AV_PIX_FMT_YUVJ444P;
}

}  // namespace

std::optional<KeyPicture> EncodeJpeg(AVFrame& frame) {
  const PlaneLayout* layout = FindLayout(frame.format);
  if (layout == nullptr) {
    VTPrintf(LOG_TYPE_FAILURE, "media", nullptr, "recorder/media/key_picture", __LINE__, __func__,
             "Pixel format %d of the camera's video is not supported.\n", frame.format);
    return std::nullopt;
  }
  if (av_frame_make_writable(&frame) < 0) throw std::bad_alloc();
  if (!HasFullRange(frame)) StretchLevels(frame);
  const TurboJpeg compressor(tjInitCompress());
  unsigned long size = tjBufSize(frame.width, frame.height, layout->sampling);
  MallocBytes bytes(static_cast<unsigned char*>(std::malloc(size)));
  if (!compressor || !bytes) throw std::bad_alloc();
  unsigned char* target = bytes.get();
  const std::array<const unsigned char*, 3> planes = {frame.data[0], frame.data[1], frame.data[2]};
  if (tjCompressFromYUVPlanes(compressor.get(), const_cast<const unsigned char**>(planes.data()), frame.width,
                              frame.linesize, frame.height, layout->sampling, &target, &size, kQuality,
                              TJFLAG_NOREALLOC) != 0) {
    return std::nullopt;
  }
  return KeyPicture{std::move(bytes), static_cast<int>(size)};
}

KeyPicture CopyJpeg(std::span<const std::uint8_t> jpeg) {
  MallocBytes bytes(static_cast<unsigned char*>(std::malloc(jpeg.size())));
  if (!bytes) throw std::bad_alloc();
  std::memcpy(bytes.get(), jpeg.data(), jpeg.size());
  return {std::move(bytes), static_cast<int>(jpeg.size())};
}

}  // namespace recorder
