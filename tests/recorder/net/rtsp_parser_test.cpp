#include "recorder/net/rtsp/rtsp_parser.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tests/recorder/net/feed.h"
#include "tests/recorder/rows.h"

namespace recorder {
namespace {

using namespace std::string_literals;

/// What comes out, one mark an item: "<status>" or "<method>" with "+body size", "p"/"c" and size for RTP and RTCP,
/// "foreign", "malformed". Bytes arrive `piece` at a time.
std::string Parse(std::string_view bytes, bool expectsPackets, std::size_t piece) {
  using enum RtspParser::Item;
  RtspParser parser;
  if (expectsPackets) parser.ExpectPackets(4, 5);
  std::string items;
  const RtspParser::Item end = Feed(parser, bytes, piece, [&](RtspParser::Item item) {
    if (item == kPacket) {
      items += (parser.Packet().isControl ? "c" : "p") + std::to_string(parser.Packet().bytes.size()) + ' ';
      return;
    }
    const RtspMessage& message = parser.Message();
    items += (message.status != 0 ? std::to_string(message.status) : message.method) + ' ';
    if (!message.body.empty()) items += '+' + std::to_string(message.body.size()) + ' ';
  });
  return items + (end == kForeign ? "foreign" : end == kMalformed ? "malformed" : "");
}

const std::string kRtp = "$\x04\x00\x0c\x80\x60\x00\x01"s + std::string(8, '\x11');
const std::string kRtcp = "$\x05\x00\x08\x80\xc8"s + std::string(6, '\0');
const std::string kAnswer = "RTSP/1.0 200 OK\r\nCSeq: 1\r\n\r\n";

struct ParserCase {
  const char* name;
  std::string bytes;
  bool expectsPackets;
  const char* items;
};

const ParserCase kParserCases[] = {
    {"AnswerWithBody", "RTSP/1.0 200 OK\r\ncontent-length: 4\r\n\r\nv=0\n" + kAnswer, false, "200 +4 200 "},
    {"FoldedHeader", "RTSP/1.0 200 OK\r\nX: a\r\n Content-Length: 9\r\n\r\n", false, "200 "},
    {"LineFeedsAlone", "RTSP/1.0 404 Not Found\nCSeq: 1\n\n", false, "404 "},
    {"PacketsGluedToAnswer", kRtp + kAnswer + kRtp + kRtcp, true, "p12 200 p12 c8 "},
    {"StrayZeros", kRtp + std::string(7, '\0') + kRtp, true, "p12 p12 "},
    {"StrayDollars", kRtp + "$$$\x07" + kRtp, true, "p12 p12 "},
    {"StrayForeignChannel", kRtp + "$\x02\x00\x04\x80\x60\x00\x00"s + kRtp, true, "p12 p12 "},
    {"StrayWrongVersion", kRtp + "$\x04\x00\x04\x40\x60\x00\x00"s + kRtp, true, "p12 p12 "},
    {"AnswerTooLargeInStream", "RTSP/1.0 200 OK\r\nContent-Length: 70000\r\n\r\n" + kRtp, true, "p12 "},
    {"HttpServer", "HTTP/1.1 400 Bad Request\r\n\r\n", false, "foreign"},
    {"NegativeBody", "RTSP/1.0 200 OK\r\nContent-Length: -1\r\n\r\n", false, "malformed"},
    {"StatusMissing", "RTSP/1.0 OK\r\n\r\n", false, "malformed"},
};

class ParserTest : public testing::TestWithParam<ParserCase> {};

TEST_P(ParserTest, CutsTheSameHoweverBytesArrive) {
  for (const std::size_t piece : {std::size_t{1}, std::size_t{5}, std::size_t{60'000}}) {
    EXPECT_EQ(Parse(GetParam().bytes, GetParam().expectsPackets, piece), GetParam().items) << piece << " at a time";
  }
}

INSTANTIATE_TEST_SUITE_P(Rtsp, ParserTest, testing::ValuesIn(kParserCases), kByName);

}  // namespace
}  // namespace recorder
