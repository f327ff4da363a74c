#include "recorder/media/codecs.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>

#include "platform/media.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

using Bytes = std::span<const std::uint8_t>;

/// What follows the next start code 00 00 01, empty when there is none.
Bytes AfterStartCode(Bytes bytes) {
  constexpr std::uint8_t kStartCode[] = {0, 0, 1};
  const auto found = std::search(bytes.begin(), bytes.end(), std::begin(kStartCode), std::end(kStartCode));
  const auto skipped = std::min<std::ptrdiff_t>(found - bytes.begin() + std::ssize(kStartCode), std::ssize(bytes));
  return bytes.subspan(static_cast<std::size_t>(skipped));
}

/// `startOf` tells what a unit behind a start code begins.
template <class StartOf>
PieceStart FirstStart(Bytes piece, const StartOf& startOf) {
  constexpr std::size_t kLongestStartCode = 4;
  if (AfterStartCode(piece.first(std::min(piece.size(), kLongestStartCode + 1))).empty()) return PieceStart::kNothing;
  for (Bytes rest = AfterStartCode(piece); !rest.empty(); rest = AfterStartCode(rest)) {
    const PieceStart start = startOf(rest);
    if (start != PieceStart::kOther) return start;
  }
  return PieceStart::kOther;
}

/// A slice whose header, `at` bytes into it, begins with the bit for "first of its picture".
PieceStart SliceStart(Bytes unit, std::size_t at) {
  const bool isFirst = unit.size() <= at || (unit[at] & 0x80) != 0;
  return isFirst ? PieceStart::kPicture : PieceStart::kFurtherSlice;
}

// --- H.264 ----------------------------------------------------------------------------------------------------------

/// True when the SEI unit (H.264 section 7.3.2.3.1) says that decoding may start here with an exact picture.
bool IsExactRecoveryPoint(Bytes unit) {
  constexpr std::size_t kRecoveryPoint = 6;
  std::size_t at = 1;
  const auto readNumber = [&unit, &at] {  // a sum of bytes that ends with the first other than 255
    std::size_t number = 0;
    for (; at < unit.size() && unit[at] == 0xff; ++at) number += 0xff;
    return at < unit.size() ? number + unit[at++] : number;
  };
  while (at + 2 < unit.size()) {
    const std::size_t type = readNumber();
    const std::size_t size = readNumber();
    const bool isNow = at < unit.size() && (unit[at] & 0x80) != 0;  // recovery_frame_cnt is 0, written as one set bit
    if (type == kRecoveryPoint) return isNow;
    if (type == 0 && size == 0) return false;
    at += size;
  }
  return false;
}

UnitKind ClassifyH264(Bytes unit) {
  bool isRecoveryPoint = false;
  for (Bytes rest = AfterStartCode(unit); !rest.empty(); rest = AfterStartCode(rest)) {
    const int type = rest[0] & 0x1f;
    if (type == 5) return UnitKind::kKey;
    if (type >= 1 && type <= 4) return isRecoveryPoint ? UnitKind::kRecoveryPoint : UnitKind::kPredicted;
    isRecoveryPoint = isRecoveryPoint || (type == 6 && IsExactRecoveryPoint(rest));
  }
  return UnitKind::kNoPicture;
}

/// first_mb_in_slice, an Exp-Golomb number (H.264 section 7.3.3): 0 is one set bit.
PieceStart H264Start(Bytes piece) {
  return FirstStart(piece, [](Bytes unit) {
    const int type = unit[0] & 0x1f;
    return type == 1 || type == 5 ? SliceStart(unit, 1) : PieceStart::kOther;
  });
}

bool IsH264Set(Bytes unit) {  // SPS, PPS
  const int type = unit[0] & 0x1f;
  return (unit[0] & 0x80) == 0 && (type == 7 || type == 8);
}

// --- H.265 ----------------------------------------------------------------------------------------------------------

UnitKind ClassifyH265(Bytes unit) {
  for (Bytes rest = AfterStartCode(unit); !rest.empty(); rest = AfterStartCode(rest)) {
    const int type = rest[0] >> 1 & 0x3f;
    if (type >= 16 && type <= 21) return UnitKind::kKey;
    if (type < 32) return UnitKind::kPredicted;
  }
  return UnitKind::kNoPicture;
}

/// first_slice_segment_in_pic_flag (H.265 section 7.3.6.1), behind a header of two bytes.
PieceStart H265Start(Bytes piece) {
  return FirstStart(piece, [](Bytes unit) {
    const int type = unit[0] >> 1 & 0x3f;
    return type < 32 ? SliceStart(unit, 2) : PieceStart::kOther;
  });
}

bool IsH265Set(Bytes unit) {  // VPS, SPS, PPS
  return (unit[0] == 0x40 || unit[0] == 0x42 || unit[0] == 0x44) && unit[1] == 1;
}

// --- JPEG -----------------------------------------------------------------------------------------------------------

UnitKind ClassifyJpeg(Bytes unit) { return BeginsLikeJpeg(unit) ? UnitKind::kKey : UnitKind::kNoPicture; }

PieceStart JpegStart(Bytes piece) { return BeginsLikeJpeg(piece) ? PieceStart::kPicture : PieceStart::kNothing; }

bool HasNoSets(Bytes /*unit*/) { return false; }

// --- MPEG-4 ---------------------------------------------------------------------------------------------------------

constexpr std::uint8_t kVop = 0xb6;

UnitKind ClassifyMpeg4(Bytes unit) {
  for (Bytes rest = AfterStartCode(unit); rest.size() > 1; rest = AfterStartCode(rest)) {
    if (rest[0] == kVop) return rest[1] >> 6 == 0 ? UnitKind::kKey : UnitKind::kPredicted;
  }
  return UnitKind::kNoPicture;
}

PieceStart Mpeg4Start(Bytes piece) {
  return FirstStart(piece, [](Bytes unit) { return unit[0] == kVop ? PieceStart::kPicture : PieceStart::kOther; });
}

bool IsMpeg4Set(Bytes unit) { return unit[0] >= 0xb0; }  // H.264 and H.265 keep the highest bit clear

// --- The rows -------------------------------------------------------------------------------------------------------

constexpr Codec kCodecs[] = {
    {.type = VIDEO_TYPE_H264,
     .name = "H.264",
     .onvif = {"h264"},
     .psia = {"h.264", "h264"},
     .builtIns = kOnvifBuiltIn | kPsiaBuiltIn | kUserBuiltIn,
     .isOverHttp = false,
     .rtp = RtpCodec{kCodecH264, "H264", "h264", ClassifyH264, H264Start, IsH264Set}},
    {.type = VIDEO_TYPE_H265,
     .name = "H.265",
     .onvif = {"h265"},
     .psia = {"h.265", "h265"},
     .builtIns = kOnvifBuiltIn,
     .isOverHttp = false,
     .rtp = RtpCodec{kCodecH265, "H265", "hevc", ClassifyH265, H265Start, IsH265Set}},
    {.type = VIDEO_TYPE_MJPEG,
     .name = "MJPEG",
     .onvif = {"jpeg"},
     .psia = {"mjpeg"},
     .builtIns = kOnvifBuiltIn | kPsiaBuiltIn | kUserBuiltIn,
     .isOverHttp = true,
     .rtp = RtpCodec{kCodecJpeg, "JPEG", "mjpeg", ClassifyJpeg, JpegStart, HasNoSets}},
    {.type = VIDEO_TYPE_MPEG4,
     .name = "MPEG4",
     .onvif = {"mpeg4", "mpv4-es"},
     .psia = {"mpeg4", "mpeg-4"},
     .builtIns = kOnvifBuiltIn | kPsiaBuiltIn | kUserBuiltIn,
     .isOverHttp = false,
     .rtp = RtpCodec{kCodecMpeg4, "MP4V-ES", "mpeg4", ClassifyMpeg4, Mpeg4Start, IsMpeg4Set}},
    {.type = VIDEO_TYPE_MXPEG,
     .name = "MXPEG",
     .onvif = {},
     .psia = {},
     .builtIns = kNoBuiltIn,
     .isOverHttp = false,
     .rtp = std::nullopt},
};

template <class Predicate>
const Codec* Find(const Predicate& isWanted) {
  const auto* found = std::find_if(std::begin(kCodecs), std::end(kCodecs), isWanted);
  return found == std::end(kCodecs) ? nullptr : found;
}

std::string_view NameOfWord(CodecWords Codec::*words, std::string_view word) {
  if (word.empty()) return "";
  const Codec* codec = Find([words, lower = LowerCase(word)](const Codec& candidate) {
    return std::ranges::find(candidate.*words, lower) != (candidate.*words).end();
  });
  return codec == nullptr ? "" : codec->name;
}

/// The codec of the first unit that tells, 0 when none does.
std::uint32_t RecogniseByStartCodes(Bytes bytes) {
  for (Bytes rest = AfterStartCode(bytes); rest.size() > 1; rest = AfterStartCode(rest)) {
    const Codec* codec = Find([rest](const Codec& row) { return row.rtp && row.rtp->isParameterSet(rest); });
    if (codec != nullptr) return codec->rtp->code;
  }
  return 0;
}

}  // namespace

std::span<const Codec> Codecs() { return kCodecs; }

const Codec* CodecOfType(int videoType) {
  return Find([videoType](const Codec& codec) { return codec.type == videoType; });
}

const Codec* CodecOfName(std::string_view name) {
  return Find([name](const Codec& codec) { return codec.name == name; });
}

const Codec* CodecOfCode(std::uint32_t code) {
  return Find([code](const Codec& codec) { return codec.rtp && codec.rtp->code == code; });
}

const Codec* CodecOfLibav(std::string_view name) {
  return Find([name](const Codec& codec) { return codec.rtp && codec.rtp->libavName == name; });
}

const Codec* CodecOfEncoding(std::string_view encoding) {
  return Find([encoding](const Codec& codec) { return codec.rtp && codec.rtp->encoding == encoding; });
}

std::string_view DescribeEncoding(std::string_view encoding) {
  return encoding.empty() ? "a codec without a name" : encoding;
}

std::string_view NameOfOnvifCodec(std::string_view word) { return NameOfWord(&Codec::onvif, word); }

std::string_view NameOfPsiaCodec(std::string_view word) { return NameOfWord(&Codec::psia, word); }

bool BeginsLikeJpeg(Bytes bytes) { return bytes.size() > 2 && bytes[0] == 0xff && bytes[1] == 0xd8; }

UnitKind ClassifyUnit(std::uint32_t code, Bytes unit) {
  const Codec* codec = CodecOfCode(code);
  return codec == nullptr ? UnitKind::kNoPicture : codec->rtp->classify(unit);
}

PieceStart StartOfPiece(std::uint32_t code, Bytes piece) {
  const Codec* codec = CodecOfCode(code);
  return codec == nullptr ? PieceStart::kNothing : codec->rtp->startOf(piece);
}

std::uint32_t RecogniseCodec(Bytes configuration, Bytes frame) {
  if (BeginsLikeJpeg(frame)) return kCodecJpeg;
  const std::uint32_t code = RecogniseByStartCodes(configuration);
  return code != 0 ? code : RecogniseByStartCodes(frame);
}

}  // namespace recorder
