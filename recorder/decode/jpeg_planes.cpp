#include "recorder/decode/jpeg_planes.h"

#include <libyuv.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <new>
#include <utility>
#include <vector>

#include "recorder/utility/limits.h"
#include "recorder/utility/log.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace recorder {
namespace {

using Table = std::array<std::uint8_t, 256>;

/// A way to have planes, the same for all depths of samples.
struct PlaneLayout {
  ChromaLayout chroma;
  int planes;
  int shiftX;  ///< of the colours, as libavutil has it
  int shiftY;
  AVPixelFormat eightBit;
};

constexpr PlaneLayout kLayouts[] = {
    {ChromaLayout::kGrey, 1, 0, 0, AV_PIX_FMT_GRAY8},
    {ChromaLayout::k420, 3, 1, 1, AV_PIX_FMT_YUV420P},
    {ChromaLayout::k422, 3, 1, 0, AV_PIX_FMT_YUV422P},
    {ChromaLayout::k444, 3, 0, 0, AV_PIX_FMT_YUV444P},
};

const AVPixFmtDescriptor* DescriptionOf(const AVFrame& frame) {
  return av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
}

const PlaneLayout* FindLayout(const AVFrame& frame) {
  const AVPixFmtDescriptor* format = DescriptionOf(frame);
  constexpr unsigned kOthers = AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_BE | AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_FLOAT |
                               AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_ALPHA | AV_PIX_FMT_FLAG_BITSTREAM;
  if (format == nullptr || (format->flags & kOthers) != 0 || format->comp[0].depth < 8) return nullptr;
  const auto* row = std::ranges::find_if(kLayouts, [&](const PlaneLayout& layout) {
    return layout.planes == format->nb_components &&
           layout.planes == av_pix_fmt_count_planes(static_cast<AVPixelFormat>(frame.format)) &&
           layout.shiftX == format->log2_chroma_w && layout.shiftY == format->log2_chroma_h;
  });
  return row == std::end(kLayouts) ? nullptr : row;
}

int WidthOf(const AVFrame& frame, const PlaneLayout& layout, int plane) {
  return plane == 0 ? frame.width : AV_CEIL_RSHIFT(frame.width, layout.shiftX);
}

int HeightOf(const AVFrame& frame, const PlaneLayout& layout, int plane) {
  return plane == 0 ? frame.height : AV_CEIL_RSHIFT(frame.height, layout.shiftY);
}

// --- Depth ----------------------------------------------------------------------------------------------------------

Frame EightBits(const AVFrame& frame, const PlaneLayout& layout) {
  Frame narrow(av_frame_alloc());
  if (!narrow || av_frame_copy_props(narrow.get(), &frame) < 0) throw std::bad_alloc();
  narrow->format = layout.eightBit;
  narrow->width = frame.width;
  narrow->height = frame.height;
  if (av_frame_get_buffer(narrow.get(), 0) < 0) throw std::bad_alloc();
  const int scale = 1 << (24 - DescriptionOf(frame)->comp[0].depth);
  for (int plane = 0; plane < layout.planes; ++plane) {
    libyuv::Convert16To8Plane(reinterpret_cast<const std::uint16_t*>(frame.data[plane]), frame.linesize[plane] / 2,
                              narrow->data[plane], narrow->linesize[plane], scale, WidthOf(frame, layout, plane),
                              HeightOf(frame, layout, plane));
  }
  return narrow;
}

// --- Range ----------------------------------------------------------------------------------------------------------

bool HasFullRange(const AVFrame& frame) {
  return frame.color_range == AVCOL_RANGE_JPEG || frame.format == AV_PIX_FMT_YUVJ420P ||
         frame.format == AV_PIX_FMT_YUVJ422P || frame.format == AV_PIX_FMT_YUVJ444P;
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

/// Brings video levels (16 to 235, ITU-R BT.601) to the full range.
void StretchLevels(AVFrame& frame, const PlaneLayout& layout) {
  static constexpr Table kLuma = StretchTable(16, 219, 0);
  static constexpr Table kColour = StretchTable(128, 224, 128);
  for (int plane = 0; plane < layout.planes; ++plane) {
    StretchPlane(frame.data[plane], frame.linesize[plane], WidthOf(frame, layout, plane),
                 HeightOf(frame, layout, plane), plane == 0 ? kLuma : kColour);
  }
}

// --- Matrix ---------------------------------------------------------------------------------------------------------

/// How the frame's colours are made of red, green and blue; null where that is as JPEG has it. Video that does not say
/// is taken as television has it: BT.709 from 720 lines up. All at full range: at video levels, the library's factors
/// for blue are cut off at 2.
const libyuv::YuvConstants* ForeignMatrix(const AVFrame& frame) {
  constexpr int kLinesOfHd = 720;
  switch (frame.colorspace) {
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL:
      return &libyuv::kYuvV2020Constants;
    case AVCOL_SPC_BT709:
    case AVCOL_SPC_SMPTE240M:  // nearly the same
      return &libyuv::kYuvF709Constants;
    case AVCOL_SPC_UNSPECIFIED:
      return frame.height < kLinesOfHd ? nullptr : &libyuv::kYuvF709Constants;
    default:
      return nullptr;
  }
}

using ToRgb = decltype(libyuv::I420ToARGBMatrix);
using ToPlanes = decltype(libyuv::ARGBToJ420);

/// In place and by way of RGB, a few rows at a time, so that they stay in the processor's cache.
void Convert(AVFrame& frame, const PlaneLayout& layout, const libyuv::YuvConstants& matrix, ToRgb* toRgb,
             ToPlanes* toPlanes) {
  constexpr int kRows = 16;
  const int stride = frame.width * 4;
  std::vector<std::uint8_t> rgb(static_cast<std::size_t>(stride) * kRows);
  for (int y = 0; y < frame.height; y += kRows) {
    const int rows = std::min(kRows, frame.height - y);
    std::array<std::uint8_t*, 3> at{};
    for (const int plane : {0, 1, 2}) {
      const int row = plane == 0 ? y : y >> layout.shiftY;
      at[static_cast<std::size_t>(plane)] = frame.data[plane] + std::ptrdiff_t{row} * frame.linesize[plane];
    }
    const int* strides = frame.linesize;
    toRgb(at[0], strides[0], at[1], strides[1], at[2], strides[2], rgb.data(), stride, &matrix, frame.width, rows);
    toPlanes(rgb.data(), stride, at[0], strides[0], at[1], strides[1], at[2], strides[2], frame.width, rows);
  }
}

/// The layout that comes out: the library has no way back to 4:4:4.
ChromaLayout ConvertMatrix(AVFrame& frame, const PlaneLayout& layout, const libyuv::YuvConstants& matrix) {
  switch (layout.chroma) {
    case ChromaLayout::k444:
      Convert(frame, layout, matrix, libyuv::I444ToARGBMatrix, libyuv::ARGBToJ422);
      return ChromaLayout::k422;
    case ChromaLayout::k422:
      Convert(frame, layout, matrix, libyuv::I422ToARGBMatrix, libyuv::ARGBToJ422);
      return ChromaLayout::k422;
    default:
      Convert(frame, layout, matrix, libyuv::I420ToARGBMatrix, libyuv::ARGBToJ420);
      return ChromaLayout::k420;
  }
}

void NameHdr(const AVFrame& frame) {
  const bool isPq = frame.color_trc == AVCOL_TRC_SMPTE2084;
  if (!isPq && frame.color_trc != AVCOL_TRC_ARIB_STD_B67) return;
  LogFailure(std::string("The camera's video is in HDR (") + (isPq ? "PQ" : "HLG") +
             "); its picture is shown as if it were BT.709.");
}

}  // namespace

std::optional<ChromaLayout> ToJpegPlanes(Frame& frame) {
  const PlaneLayout* layout = FindLayout(*frame);
  if (std::max(frame->width, frame->height) > kLongestJpegSide) {
    LogFailure("The camera's video is wider or higher than a JPEG can be.");
    return std::nullopt;
  }
  if (layout == nullptr) {
    LogFailure("Pixel format " + std::to_string(frame->format) + " of the camera's video is not supported.");
    return std::nullopt;
  }
  NameHdr(*frame);
  const bool isDeep = DescriptionOf(*frame)->comp[0].depth > 8;
  if (isDeep) frame = EightBits(*frame, *layout);
  const auto* matrix = layout->chroma == ChromaLayout::kGrey ? nullptr : ForeignMatrix(*frame);
  const bool isFull = HasFullRange(*frame);
  if (matrix == nullptr && isFull) return layout->chroma;
  if (av_frame_make_writable(frame.get()) < 0) throw std::bad_alloc();
  if (!isFull) StretchLevels(*frame, *layout);
  return matrix == nullptr ? layout->chroma : ConvertMatrix(*frame, *layout, *matrix);
}

}  // namespace recorder
