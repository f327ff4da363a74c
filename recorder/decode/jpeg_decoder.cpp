#include "recorder/decode/jpeg_decoder.h"

// clang-format off
#include <cstdio>  // jpeglib.h needs it
#include <jerror.h>
#include <jpeglib.h>
// clang-format on

#include <algorithm>
#include <csetjmp>
#include <iterator>
#include <vector>

#include "recorder/utility/limits.h"

namespace recorder {
namespace {

/// Warnings about what does not touch the picture.
constexpr int kHarmless[] = {JWRN_EXTRANEOUS_DATA, JWRN_NOT_SEQUENTIAL, JWRN_JFIF_MAJOR, JWRN_ADOBE_XFORM};

/// A decoder of libjpeg, which is C and calls back; what it says of the data is kept, not printed.
class Reader {
 public:
  Reader() {
    decoder_.err = jpeg_std_error(&errors_);
    decoder_.client_data = this;
    errors_.error_exit = GiveUp;
    errors_.emit_message = Hear;
  }
  ~Reader() { jpeg_destroy_decompress(&decoder_); }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  bool IsWhole(std::span<const std::uint8_t> jpeg) {
    if (setjmp(giveUp_) != 0) return false;  // NOLINT(cert-err52-cpp): how libjpeg is left; nothing needs a destructor
    jpeg_create_decompress(&decoder_);
    decoder_.mem->max_memory_to_use = long{kMostJpegMemory};
    jpeg_mem_src(&decoder_, jpeg.data(), static_cast<unsigned long>(jpeg.size()));
    jpeg_read_header(&decoder_, TRUE);
    decoder_.scale_num = 1;  // the data is read all the same; of each block only its mean is computed
    decoder_.scale_denom = 8;
    decoder_.out_color_space = decoder_.jpeg_color_space;
    jpeg_start_decompress(&decoder_);
    row_.resize(std::size_t{decoder_.output_width} * static_cast<std::size_t>(decoder_.output_components));
    for (JSAMPROW row = row_.data(); decoder_.output_scanline < decoder_.output_height;) {
      jpeg_read_scanlines(&decoder_, &row, 1);
    }
    jpeg_finish_decompress(&decoder_);
    return !isDamaged_;
  }

 private:
  static Reader& Of(j_common_ptr decoder) { return *static_cast<Reader*>(decoder->client_data); }

  [[noreturn]] static void GiveUp(j_common_ptr decoder) {
    std::longjmp(Of(decoder).giveUp_, 1);  // NOLINT(cert-err52-cpp)
  }

  static void Hear(j_common_ptr decoder, int level) {
    const bool isWarning = level < 0;
    const bool isHarmless = std::ranges::find(kHarmless, decoder->err->msg_code) != std::end(kHarmless);
    if (isWarning && !isHarmless) Of(decoder).isDamaged_ = true;
  }

  jpeg_decompress_struct decoder_{};
  jpeg_error_mgr errors_{};
  std::jmp_buf giveUp_{};
  std::vector<JSAMPLE> row_;
  bool isDamaged_ = false;
};

}  // namespace

bool DecodesWhole(std::span<const std::uint8_t> jpeg) { return Reader().IsWhole(jpeg); }

}  // namespace recorder
