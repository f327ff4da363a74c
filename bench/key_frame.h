#pragma once

#include <string>

#include "recorder/decode/libav.h"

// Pictures by the libraries alone.

namespace bench {

struct PictureSize {
  int width = 0;
  int height = 0;
};

/// Of a JPEG that decodes without a complaint; 0x0 for anything else.
PictureSize DecodedSize(const std::string& jpeg);

/// The first key frame of a camera's stream.
class KeyFrame {
 public:
  /// `address` with user and password. Throws std::runtime_error.
  explicit KeyFrame(const std::string& address);

  /// Decodes it with one thread and a new decoder and encodes what comes out, as it stands. A JPEG is a picture
  /// already.
  std::string ToJpeg() const;

 private:
  recorder::FormatContext camera_;  // owns the parameters
  recorder::AvPacket packet_;
  const AVCodecParameters* parameters_ = nullptr;
};

}  // namespace bench
