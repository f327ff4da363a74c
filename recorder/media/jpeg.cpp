#include <turbojpeg.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <span>
#include <utility>

#include "platform/media.h"
#include "platform/utility.h"
#include "recorder/decode/jpeg_check.h"
#include "recorder/decode/key_picture.h"
#include "recorder/decode/picture_decoder.h"
#include "recorder/media/codecs.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/handle.h"

namespace recorder {
namespace {

using TurboJpeg = std::unique_ptr<void, Deleter<tjDestroy>>;

/// A JPEG is the fetcher's: it was judged there.
std::optional<KeyPicture> MakePicture(std::span<const unsigned char> configuration,
                                      std::span<const unsigned char> unit) {
  const std::uint32_t codec = RecogniseCodec(configuration, unit);
  if (codec == kCodecJpeg) return HasJpegMarkers(unit) ? std::optional(CopyJpeg(unit)) : std::nullopt;
  Frame frame = DecodeKeyFrame(codec, configuration, unit);
  return frame ? EncodeJpeg(std::move(frame)) : std::nullopt;
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
