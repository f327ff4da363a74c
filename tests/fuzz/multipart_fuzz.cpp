#include <string>

#include "recorder/decode/picture_finder.h"
#include "tests/fuzz/fuzz.h"

// A body of HTTP with pictures, in parts or not. The first byte tells how many bytes arrive at a time; the picture must
// not depend on it.

namespace recorder {
namespace {

constexpr std::size_t kMaxPicture = 1000;

/// The picture, "" for none.
std::string Picture(std::string_view body, std::size_t piece) {
  PictureFinder finder(kMaxPicture);
  auto state = PictureFinder::State::kMore;
  for (; !body.empty() && state == PictureFinder::State::kMore; body.remove_prefix(std::min(piece, body.size()))) {
    state = finder.Feed(body.substr(0, piece));
  }
  if (state == PictureFinder::State::kMore) state = finder.Finish();
  std::string picture = finder.TakePicture();
  Require(picture.empty() == (state != PictureFinder::State::kPicture) && picture.size() <= kMaxPicture);
  return picture;
}

}  // namespace

void RunInput(std::string_view input) {
  if (input.empty()) return;
  const std::size_t piece = static_cast<unsigned char>(input.front()) + 1U;
  input.remove_prefix(1);
  Require(Picture(input, piece) == Picture(input, input.size()));
}

}  // namespace recorder
