#include <string>

#include "recorder/utility/limits.h"
#include "tests/fuzz/fuzz.h"
#include "tests/recorder/net/feed.h"

// What a camera sends over an RTSP connection. The first byte tells whether packets are expected among the messages and
// how many bytes arrive at a time; what comes out must not depend on the latter.

namespace recorder {
namespace {

std::string TextOf(const RtspMessage& message) {
  Require(message.status == 0 || (message.status >= 100 && message.status <= 999));
  Require(message.body.size() <= kLargestRtspBody);
  std::string text = std::to_string(message.status) + message.method + '\n' + message.body + '\n';
  for (const auto& [name, value] : message.headers) text.append(name).append(":").append(value).append("\n");
  return text;
}

/// All that comes out, the last a mark of how it ended.
std::string Parse(std::string_view bytes, bool expectsPackets, std::size_t piece) {
  RtspParser parser;
  if (expectsPackets) parser.ExpectPackets(0, 1);
  std::string items;
  const RtspParser::Item end = Feed(parser, bytes, piece, [&](RtspParser::Item item) {
    if (item == RtspParser::Item::kMessage) {
      items += TextOf(parser.Message());
      return;
    }
    items += parser.Packet().isControl ? 'c' : 'p';
    items.append(parser.Packet().bytes.begin(), parser.Packet().bytes.end());
  });
  return items + std::to_string(static_cast<int>(end));
}

}  // namespace

void RunInput(std::string_view input) {
  if (input.empty()) return;
  const auto first = static_cast<unsigned char>(input.front());
  const bool expectsPackets = first % 2 == 1;
  input.remove_prefix(1);
  const std::size_t piece = first / 2 + 1U;
  Require(Parse(input, expectsPackets, piece) == Parse(input, expectsPackets, input.size()));
}

}  // namespace recorder
