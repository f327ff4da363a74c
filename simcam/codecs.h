#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

// The codecs that a simulated camera has, a row each: all that differs from one to another. Who needs something of a
// codec reads its row; codecs.cpp has them.

namespace simcam {

/// How ONVIF media 1 has a codec.
struct Media1Words {
  const char* name;      ///< of the encoding, and of its element
  const char* settings;  ///< how it is set; may have the place {gop}
  const char* options;   ///< what its profile, in the codec's own sense, can be set to
};

struct Codec {
  const char* name;  ///< in the configuration

  /// Launch descriptions of GStreamer. The encoder's has the places {gop} (pictures), {bitrate} (kbit/s) and {slices};
  /// the parser cuts an elementary stream into the same units; the payloader lacks its name.
  const char* encoder;
  const char* parser;
  const char* payloader;
  bool canBeLive;     ///< false: its encoder gives no time stamps, so that it is always a clip
  bool isAllKeys;     ///< each picture is a key frame
  int mostRtpPixels;  ///< wide or high; 0: no limit

  std::optional<Media1Words> media1;  ///< none: media 1 does not know it
  const char* media2;                 ///< name of the encoding in ONVIF media 2
  const char* media2Profile;          ///< in the codec's own sense; "" if it has none
  const char* psia;                   ///< PSIA's videoCodecType; null: PSIA does not know it
};

/// Codecs are told apart by the address of their row. In the order of media 1's schema; media 2 has the newest first.
std::span<const Codec> Codecs();

/// Null for an unknown name.
const Codec* FindCodec(std::string_view name);

/// The names, for --help.
std::string CodecHelp();

}  // namespace simcam
