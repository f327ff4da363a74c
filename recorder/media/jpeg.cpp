#include <turbojpeg.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <new>
#include <optional>
#include <span>

#include "platform/media.h"
#include "platform/utility.h"
#include "recorder/media/access_unit.h"
#include "recorder/media/jpeg_check.h"
#include "recorder/media/picture_decoder.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/handle.h"

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

/// A picture on its way to the caller.
struct Picture {
  MallocBytes bytes;
  int size = 0;
};

std::optional<Picture> Encode(AVFrame& frame) {
  const PlaneLayout* layout = FindLayout(frame.format);
  if (layout == nullptr) {
    VTPrintf(LOG_TYPE_FAILURE, "media", nullptr, "recorder/media/jpeg", __LINE__, __func__,
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
  return Picture{std::move(bytes), static_cast<int>(size)};
}

std::optional<Picture> Copy(std::span<const unsigned char> jpeg) {
  if (!IsWholeJpeg(jpeg)) return std::nullopt;
  MallocBytes bytes(static_cast<unsigned char*>(std::malloc(jpeg.size())));
  if (!bytes) throw std::bad_alloc();
  std::memcpy(bytes.get(), jpeg.data(), jpeg.size());
  return Picture{std::move(bytes), static_cast<int>(jpeg.size())};
}

std::optional<Picture> MakePicture(std::span<const unsigned char> configuration, std::span<const unsigned char> unit) {
  const std::uint32_t codec = RecogniseCodec(configuration, unit);
  if (codec == kCodecJpeg) return Copy(unit);
  const Frame frame = DecodeKeyFrame(codec, configuration, unit);
  return frame ? Encode(*frame) : std::nullopt;
}

std::span<const unsigned char> ToSpan(const unsigned char* bytes, int size) {
  return {bytes, bytes == nullptr ? 0 : static_cast<std::size_t>(std::max(size, 0))};
}

}  // namespace
}  // namespace recorder

int DoFFMpegGetJpeg(int /*videoType*/, const unsigned char* extradata, int extradataSize, const unsigned char* frame,
                    int frameSize, unsigned char** jpeg, int* jpegSize) {
  auto picture = recorder::MakePicture(recorder::ToSpan(extradata, extradataSize), recorder::ToSpan(frame, frameSize));
  if (!picture) {
    VTPrintf(LOG_TYPE_FAILURE, "media", nullptr, "recorder/media/jpeg", __LINE__, __func__,
             "A key frame of %d bytes could not be turned into a picture.\n", frameSize);
    return -1;
  }
  recorder::RequestScope::Current().SetCause(recorder::Outcome::kOk);
  *jpeg = picture->bytes.release();
  *jpegSize = picture->size;
  return 0;
}

void GetJpegReso(const unsigned char* jpeg, int jpegSize, int* width, int* height) {
  *width = 0;
  *height = 0;
  if (jpeg == nullptr || jpegSize <= 0) return;
  const recorder::TurboJpeg reader(tjInitDecompress());
  if (!reader) throw std::bad_alloc();
  int sampling = 0;
  int colours = 0;
  if (tjDecompressHeader3(reader.get(), jpeg, static_cast<unsigned long>(jpegSize), width, height, &sampling,
                          &colours) != 0) {
    recorder::RequestScope::Current().SetCause(recorder::Outcome::kNotUnderstood);
    *width = 0;
    *height = 0;
  }
}
