#include <algorithm>
#include <memory>
#include <vector>

#include "recorder/decode/access_unit.h"
#include "recorder/decode/depacketizer.h"
#include "recorder/decode/picture_decoder.h"
#include "recorder/net/rtsp/sdp.h"
#include "tests/fuzz/fuzz.h"
#include "tests/recorder/net/feed.h"

// A session description, an empty line, and what a camera then sends: interleaved packets on the channels 0 and 1.

namespace recorder {
namespace {

constexpr std::string_view kGap = "\n\n";

void ReadPacket(const InterleavedPacket& packet, Depacketizer& depacketizer, AccessUnitAssembler& assembler) {
  std::vector<std::uint8_t> pieces;
  depacketizer.Feed(packet.bytes, pieces);
  const auto header = ParseRtpHeader(packet.bytes);
  if (packet.isControl || !header) return;
  assembler.Add(*header, pieces);
  while (const auto unit = assembler.Take()) {
    Require(!unit->bytes.empty() && unit->kind != UnitKind::kNoPicture);
    DecodeKeyFrame(RecogniseCodec(depacketizer.Configuration(), unit->bytes), depacketizer.Configuration(),
                   unit->bytes);
  }
}

/// The payload format that libavformat chooses for the video of a description; null for none.
std::unique_ptr<Depacketizer> Describe(std::string_view description) {
  const auto video = FindVideo(description);
  if (!video) return nullptr;
  ResolveControl("rtsp://127.0.0.1:554/live", video->control);
  const auto again = FindVideo(video->description);
  Require(again && (again->codec == video->codec || again->codec.empty()) && again->control.empty());
  return Depacketizer::Open(video->description, [](auto) {});
}

}  // namespace

void RunInput(std::string_view input) {
  const std::size_t gap = std::min(input.find(kGap), input.size());
  const auto depacketizer = Describe(input.substr(0, gap));
  if (!depacketizer) return;
  depacketizer->Configuration();
  AccessUnitAssembler assembler(depacketizer->Codec());
  RtspParser parser;
  parser.ExpectPackets(0, 1);
  Feed(parser, input.substr(std::min(gap + kGap.size(), input.size())), input.size(), [&](RtspParser::Item item) {
    if (item == RtspParser::Item::kPacket) ReadPacket(parser.Packet(), *depacketizer, assembler);
  });
}

}  // namespace recorder
