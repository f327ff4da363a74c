#include "platform/media.h"
#include "recorder/decode/jpeg_check.h"
#include "recorder/utility/handle.h"
#include "tests/fuzz/fuzz.h"

// A picture as a camera sends it: a JPEG, or a key frame that becomes one.

namespace recorder {

void RunInput(std::string_view input) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(input.data());
  const int size = static_cast<int>(input.size());
  int width = -1;
  int height = -1;
  GetJpegReso(bytes, size, &width, &height);
  Require(width >= 0 && height >= 0 && (width == 0) == (height == 0));
  IsWholeJpeg(AsBytes(input));

  unsigned char* jpeg = nullptr;
  int jpegSize = 0;
  if (DoFFMpegGetJpeg(0, nullptr, 0, bytes, size, &jpeg, &jpegSize) != 0) return;
  const MallocBytes owner(jpeg);
  Require(HasJpegMarkers(std::span(jpeg, static_cast<std::size_t>(jpegSize))));
}

}  // namespace recorder
