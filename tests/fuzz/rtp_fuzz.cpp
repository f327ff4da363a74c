#include <algorithm>
#include <vector>

#include "platform/media.h"
#include "recorder/media/access_unit.h"
#include "recorder/media/depacketizer.h"
#include "recorder/media/picture_decoder.h"
#include "recorder/net/rtsp_parser.h"
#include "recorder/net/sdp.h"
#include "recorder/utility/translate.h"
#include "tests/fuzz/fuzz.h"

// A session description, an empty line, and what a camera then sends: interleaved packets on the channels 0 and 1.

namespace recorder {
namespace {

constexpr std::string_view kGap = "\n\n";

constexpr std::pair<AVCodecID, std::uint32_t> kCodecs[] = {{AV_CODEC_ID_H264, kCodecH264},
                                                           {AV_CODEC_ID_HEVC, kCodecH265},
                                                           {AV_CODEC_ID_MPEG4, kCodecMpeg4},
                                                           {AV_CODEC_ID_MJPEG, kCodecJpeg}};

void ReadPacket(const InterleavedPacket& packet, Depacketizer& depacketizer, AccessUnitAssembler& assembler) {
  std::vector<std::uint8_t> pieces;
  depacketizer.Feed(packet.bytes, pieces);
  const auto header = ParseRtpHeader(packet.bytes);
  if (packet.isControl || !header) return;
  assembler.Add(*header, pieces);
  while (const auto unit = assembler.Take()) {
    Require(!unit->bytes.empty() && unit->kind != UnitKind::kNoPicture);
    IsWholeKeyFrame(RecogniseCodec(depacketizer.Configuration(), unit->bytes), depacketizer.Configuration(),
                    unit->bytes);
  }
}

}  // namespace

void RunInput(std::string_view input) {
  const std::size_t gap = std::min(input.find(kGap), input.size());
  const auto video = FindVideo(input.substr(0, gap));
  const auto depacketizer = video ? Depacketizer::Open(video->description, [](auto) {}) : nullptr;
  if (!depacketizer) return;
  AccessUnitAssembler assembler(Translate(kCodecs, depacketizer->Codec(), 0));

  RtspParser parser;
  parser.ExpectPackets(0, 1);
  const std::span<std::uint8_t> space = parser.Space();
  const std::string_view stream = input.substr(std::min(gap + kGap.size(), input.size())).substr(0, space.size());
  std::copy(stream.begin(), stream.end(), space.begin());
  parser.Filled(stream.size());
  for (RtspParser::Item item{}; (item = parser.Next()) != RtspParser::Item::kNone;) {
    if (item == RtspParser::Item::kPacket) ReadPacket(parser.Packet(), *depacketizer, assembler);
  }
}

}  // namespace recorder
