#include "recorder/decode/key_picture.h"

#include <turbojpeg.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "recorder/decode/jpeg_planes.h"

namespace recorder {
namespace {

using TurboJpeg = std::unique_ptr<void, Deleter<tjDestroy>>;
constexpr int kQuality = 85;

TJSAMP SamplingOf(ChromaLayout layout) {
  switch (layout) {
    case ChromaLayout::kGrey:
      return TJSAMP_GRAY;
    case ChromaLayout::k422:
      return TJSAMP_422;
    case ChromaLayout::k444:
      return TJSAMP_444;
    default:
      return TJSAMP_420;
  }
}

/// Writes the shape of a pixel into the first segment (JFIF): densities without a unit, across and down, that are as
/// the pixel's width to its height. So FFmpeg and most programs read them that show a picture in its shape; ITU-T T.871
/// would have them the other way round.
void SetPixelShape(unsigned char* jpeg, AVRational shape) {
  constexpr int kMost = 0xFFFF;
  if (shape.num <= 0 || shape.den <= 0) return;
  av_reduce(&shape.num, &shape.den, shape.num, shape.den, kMost);
  constexpr std::size_t kUnits = 13;
  const auto high = [](int value) { return static_cast<unsigned char>(value >> 8); };
  const auto low = [](int value) { return static_cast<unsigned char>(value); };
  const std::array<unsigned char, 5> densities = {0, high(shape.num), low(shape.num), high(shape.den), low(shape.den)};
  std::ranges::copy(densities, jpeg + kUnits);
}

}  // namespace

std::optional<KeyPicture> EncodeJpeg(Frame frame) {
  const std::optional<ChromaLayout> layout = ToJpegPlanes(frame);
  if (!layout) return std::nullopt;
  const TJSAMP sampling = SamplingOf(*layout);
  const TurboJpeg compressor(tjInitCompress());
  unsigned long size = tjBufSize(frame->width, frame->height, sampling);
  MallocBytes bytes(static_cast<unsigned char*>(std::malloc(size)));
  if (!compressor || !bytes) throw std::bad_alloc();
  unsigned char* target = bytes.get();
  const std::array<const unsigned char*, 3> planes = {frame->data[0], frame->data[1], frame->data[2]};
  if (tjCompressFromYUVPlanes(compressor.get(), const_cast<const unsigned char**>(planes.data()), frame->width,
                              frame->linesize, frame->height, sampling, &target, &size, kQuality,
                              TJFLAG_NOREALLOC) != 0) {
    return std::nullopt;
  }
  SetPixelShape(bytes.get(), frame->sample_aspect_ratio);
  return KeyPicture{std::move(bytes), static_cast<int>(size)};
}

KeyPicture CopyJpeg(std::span<const std::uint8_t> jpeg) {
  MallocBytes bytes(static_cast<unsigned char*>(std::malloc(jpeg.size())));
  if (!bytes) throw std::bad_alloc();
  std::memcpy(bytes.get(), jpeg.data(), jpeg.size());
  return {std::move(bytes), static_cast<int>(jpeg.size())};
}

}  // namespace recorder
