#include "recorder/decode/jpeg.h"
#include "recorder/decode/jpeg_check.h"
#include "recorder/utility/bytes.h"
#include "tests/fuzz/fuzz.h"

// A picture as a camera sends it: a JPEG, or a key frame that becomes one.

namespace recorder {

void RunInput(std::string_view input) {
  const auto size = SizeOfJpeg(AsBytes(input));
  Require(!size || (size->width > 0 && size->height > 0));
  IsWholeJpeg(AsBytes(input));
  const auto jpeg = MakeJpeg({}, AsBytes(input));
  Require(!jpeg || HasJpegMarkers(jpeg->Span()));
}

}  // namespace recorder
