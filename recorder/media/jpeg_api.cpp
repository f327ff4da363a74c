#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <optional>
#include <span>
#include <utility>

#include "platform/media.h"
#include "platform/utility.h"
#include "recorder/media/codecs.h"
#include "recorder/media/media_pool.h"
#include "recorder/request/request_scope.h"
#include "recorder/utility/bytes.h"
#include "recorder/utility/handle.h"

namespace recorder {
namespace {

using Bytes = std::span<const std::uint8_t>;

Bytes ToSpan(const unsigned char* bytes, int size) {
  return {bytes, bytes == nullptr ? 0 : static_cast<std::size_t>(std::max(size, 0))};
}

struct Picture {
  Outcome outcome = Outcome::kOk;
  MallocBytes bytes = nullptr;
  int size = 0;
};

Picture CopyOf(Bytes jpeg) {
  MallocBytes bytes(static_cast<unsigned char*>(std::malloc(jpeg.size())));
  if (!bytes) throw std::bad_alloc();
  std::ranges::copy(jpeg, bytes.get());
  return {Outcome::kOk, std::move(bytes), static_cast<int>(jpeg.size())};
}

/// A JPEG is the fetcher's: it was judged there.
Picture MakePicture(Bytes configuration, Bytes frame) {
  if (BeginsLikeJpeg(frame)) return CopyOf(frame);
  const auto media = MediaOfThread();
  const auto answer =
      media->Ask(MediaRequest::kDecode, static_cast<std::uint32_t>(configuration.size()), configuration, frame);
  if (!answer) return {media->Failure()};
  return answer->picture.empty() ? Picture{Outcome::kNotUnderstood} : CopyOf(AsBytes(answer->picture));
}

struct Size {
  Outcome outcome = Outcome::kOk;
  int width = 0;
  int height = 0;
};

Size Measure(Bytes jpeg) {
  const auto media = MediaOfThread();
  const auto answer = media->Ask(MediaRequest::kMeasure, 0, jpeg);
  if (!answer) return {media->Failure()};
  constexpr std::uint32_t kLongestSide = 0xFFFF;  // ITU-T T.81 section B.2.2
  const auto isSide = [](std::uint32_t pixels) { return pixels > 0 && pixels <= kLongestSide; };
  if (!isSide(answer->first) || !isSide(answer->second)) return {Outcome::kNotUnderstood};
  return {Outcome::kOk, static_cast<int>(answer->first), static_cast<int>(answer->second)};
}

}  // namespace
}  // namespace recorder

int DoFFMpegGetJpeg(int /*videoType*/, const unsigned char* extradata, int extradataSize, const unsigned char* frame,
                    int frameSize, unsigned char** jpeg, int* jpegSize) {
  auto picture = recorder::MakePicture(recorder::ToSpan(extradata, extradataSize), recorder::ToSpan(frame, frameSize));
  recorder::RequestScope::Current().SetCause(picture.outcome);
  if (picture.outcome != recorder::Outcome::kOk) {
    VTPrintf(LOG_TYPE_FAILURE, "media", nullptr, "recorder/media/jpeg", __LINE__, __func__,
             "A key frame of %d bytes could not be turned into a picture.\n", frameSize);
    return -1;
  }
  *jpeg = picture.bytes.release();
  *jpegSize = picture.size;
  return 0;
}

void GetJpegReso(const unsigned char* jpeg, int jpegSize, int* width, int* height) {
  *width = 0;
  *height = 0;
  if (jpeg == nullptr || jpegSize <= 0) return;
  const recorder::Size size = recorder::Measure(recorder::ToSpan(jpeg, jpegSize));
  if (size.outcome != recorder::Outcome::kOk) recorder::RequestScope::Current().SetCause(size.outcome);
  *width = size.width;
  *height = size.height;
}
