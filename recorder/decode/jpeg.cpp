#include "recorder/decode/jpeg.h"

#include <turbojpeg.h>

#include <memory>
#include <new>
#include <utility>

#include "platform/media.h"
#include "recorder/decode/jpeg_check.h"
#include "recorder/decode/picture_decoder.h"
#include "recorder/media/codecs.h"

namespace recorder {
namespace {

using TurboJpeg = std::unique_ptr<void, Deleter<tjDestroy>>;

}  // namespace

std::optional<JpegSize> SizeOfJpeg(std::span<const std::uint8_t> jpeg) {
  const TurboJpeg reader(tjInitDecompress());
  if (!reader) throw std::bad_alloc();
  JpegSize size;
  int sampling = 0;
  int colours = 0;
  const int result = tjDecompressHeader3(reader.get(), jpeg.data(), static_cast<unsigned long>(jpeg.size()),
                                         &size.width, &size.height, &sampling, &colours);
  const bool hasPicture = result == 0 && size.width > 0 && size.height > 0;  // a file of tables alone succeeds, too
  return hasPicture ? std::optional(size) : std::nullopt;
}

std::optional<KeyPicture> MakeJpeg(std::span<const std::uint8_t> configuration, std::span<const std::uint8_t> frame) {
  const std::uint32_t codec = RecogniseCodec(configuration, frame);
  if (codec == kCodecJpeg) return HasJpegMarkers(frame) ? std::optional(CopyJpeg(frame)) : std::nullopt;
  Frame decoded = DecodeKeyFrame(codec, configuration, frame);
  return decoded ? EncodeJpeg(std::move(decoded)) : std::nullopt;
}

}  // namespace recorder
