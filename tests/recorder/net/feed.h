#pragma once

#include <algorithm>
#include <span>
#include <string_view>

#include "recorder/net/rtsp/rtsp_parser.h"

namespace recorder {

/// Gives `bytes` to `parser`, at most `piece` of them at a time, and each message and packet that comes out to `take`.
/// Returns how it ended: kNone, kForeign or kMalformed.
template <class Take>
RtspParser::Item Feed(RtspParser& parser, std::string_view bytes, std::size_t piece, Take take) {
  using enum RtspParser::Item;
  for (;;) {
    const RtspParser::Item item = parser.Next();
    if (item == kForeign || item == kMalformed || (item == kNone && bytes.empty())) return item;
    if (item != kNone) {
      take(item);
      continue;
    }
    const std::span<std::uint8_t> space = parser.Space();
    const std::string_view taken = bytes.substr(0, std::min(piece, space.size()));
    std::copy(taken.begin(), taken.end(), space.begin());
    parser.Filled(taken.size());
    bytes.remove_prefix(taken.size());
  }
}

}  // namespace recorder
