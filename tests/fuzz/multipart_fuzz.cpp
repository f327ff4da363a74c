#include <string>

#include "recorder/device/check/multipart.h"
#include "recorder/utility/text.h"
#include "tests/fuzz/fuzz.h"

// An answer of several parts: a line with its content type, the body. The first byte tells how many bytes arrive at a
// time; the picture must not depend on it.

namespace recorder {
namespace {

constexpr std::size_t kMaxPart = 1000;

/// The picture, "" for none.
std::string Picture(std::string_view contentType, std::string_view body, std::size_t piece) {
  MultipartReader reader(contentType, kMaxPart);
  auto state = MultipartReader::State::kMore;
  for (; !body.empty() && state == MultipartReader::State::kMore; body.remove_prefix(std::min(piece, body.size()))) {
    state = reader.Feed(body.substr(0, piece));
  }
  std::string picture = reader.TakePicture();
  Require(picture.empty() == (state != MultipartReader::State::kPicture) && picture.size() <= kMaxPart);
  return picture;
}

}  // namespace

void RunInput(std::string_view input) {
  if (input.empty()) return;
  const std::size_t piece = static_cast<unsigned char>(input.front()) + 1U;
  input.remove_prefix(1);
  const std::string_view contentType = TakeUntil(input, '\n');
  Require(Picture(contentType, input, piece) == Picture(contentType, input, input.size()));
}

}  // namespace recorder
