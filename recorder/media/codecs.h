#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "platform/device.h"

// The codecs that the recorder knows, a row each: all that differs from one to another, so that whoever needs something
// of a codec reads its row. Pure functions, any thread.

namespace recorder {

/// What the access unit of a codec is good for, the least first.
enum class UnitKind {
  kNoPicture,      ///< parameter sets alone, or not recognised
  kPredicted,      ///< needs other pictures
  kRecoveryPoint,  ///< H.264: exact from here on, without being called a key frame
  kKey,            ///< H.264 IDR, H.265 IRAP, MPEG-4 I-VOP, any JPEG
};

/// What begins in the bytes that one packet completed. A slice's own header tells whether it is the first of its
/// picture.
enum class PieceStart {
  kNothing,       ///< they go on with the unit before
  kOther,         ///< parameter sets and the like, and no slice
  kPicture,       ///< the first slice of a picture, or of the second field of one
  kFurtherSlice,  ///< another slice of the picture before
};

/// How a codec comes over RTSP, and how its access units are read.
struct RtpCodec {
  std::uint32_t code;          ///< four-character code, such as kCodecH264
  std::string_view encoding;   ///< its name in session descriptions, in upper case (RFC 6184, 7798, 3016, 2435)
  std::string_view libavName;  ///< FFmpeg's name of the codec and of its decoder, as avcodec_get_name() has it
  UnitKind (*classify)(std::span<const std::uint8_t> unit);  ///< kind of a unit, or of the beginning of one
  PieceStart (*startOf)(std::span<const std::uint8_t> piece);
  /// True when only this codec has such a unit. `unit` is what follows a start code, at least two bytes; never true for
  /// a codec without start codes.
  bool (*isParameterSet)(std::span<const std::uint8_t> unit);
};

/// The models that no file describes, as bits.
enum BuiltIn : unsigned int {
  kNoBuiltIn = 0,
  kOnvifBuiltIn = 1,
  kPsiaBuiltIn = 2,
  kUserBuiltIn = 4,
};

/// Other words for a codec, in lower case, as many as there are; the rest is "".
using CodecWords = std::array<std::string_view, 2>;

struct Codec {
  VIDEO_TYPE type;
  std::string_view name;        ///< for clients and model files, such as "H.264"
  CodecWords onvif;             ///< what cameras call it over ONVIF: media 1 by elements, media 2 by MIME subtypes
  CodecWords psia;              ///< what cameras call it over PSIA
  unsigned int builtIns;        ///< bits of BuiltIn: the models whose document names it before a camera was asked
  bool isOverHttp;              ///< comes over HTTP, too, as parts that are JPEGs
  std::optional<RtpCodec> rtp;  ///< none: it does not come over RTSP
};

/// All of them, in the order in which capability documents name them.
std::span<const Codec> Codecs();

/// Each null when there is no such codec.
const Codec* CodecOfType(int videoType);
const Codec* CodecOfName(std::string_view name);
const Codec* CodecOfCode(std::uint32_t code);
const Codec* CodecOfLibav(std::string_view name);
const Codec* CodecOfEncoding(std::string_view encoding);

/// What a session description calls a codec, for log lines.
std::string_view DescribeEncoding(std::string_view encoding);

/// The recorder's name of what a camera calls `word`, in any capitals; "" for a codec that it does not know.
std::string_view NameOfOnvifCodec(std::string_view word);
std::string_view NameOfPsiaCodec(std::string_view word);

/// True for bytes that begin with the start of an image (ITU-T T.81 annex B).
bool BeginsLikeJpeg(std::span<const std::uint8_t> bytes);

/// Kind of a unit, or of the beginning of one; `code` is a four-character code such as kCodecH264.
UnitKind ClassifyUnit(std::uint32_t code, std::span<const std::uint8_t> unit);

/// What begins in a piece, as a Depacketizer gives it: one that begins a unit begins with its start code.
PieceStart StartOfPiece(std::uint32_t code, std::span<const std::uint8_t> piece);

/// Four-character code of the codec in which configuration and frame are written, recognised from their bytes (start
/// codes and unit types of H.264, H.265 and MPEG-4 part 2, the first marker of JPEG); 0 for none of them.
std::uint32_t RecogniseCodec(std::span<const std::uint8_t> configuration, std::span<const std::uint8_t> frame);

}  // namespace recorder
